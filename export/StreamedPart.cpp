#include "export/StreamedPart.h"

#include <utility>

#include "platform/Xml.h"

namespace ZkMobileBackup {

XmlStream& StreamedPart::begin(pugi::xml_node parent) {
    placeholder_ = appendElement(parent, "streamed");
    PrintedAround around(document(), placeholder_);
    before_ = std::move(around.before);
    file_ = std::make_unique<FileReplacement>(path_);
    file_->append(before_);
    return content_.emplace(gathered_, around.depth, [this] { drain(); });
}

void StreamedPart::drain() {
    isStreamed_ = isStreamed_ || !gathered_.empty();
    file_->append(gathered_);
    gathered_.clear();
}

std::string StreamedPart::finish() {
    drain();
    if (!isStreamed_) {
        placeholder_.parent().remove_child(placeholder_);
        return part_.write(path_);
    }
    const PrintedAround around(document(), placeholder_);
    if (around.before != before_) replaceBefore(around.before);
    file_->append(around.behind);
    return file_->finish();
}

void StreamedPart::replaceBefore(const std::string& before) {
    auto file = std::make_unique<FileReplacement>(path_);
    file->append(before);
    file->appendContentOf(*file_, before_.size());
    file_ = std::move(file);
}

}  // namespace ZkMobileBackup
