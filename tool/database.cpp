#include "tool/database.h"

#include <filesystem>
#include <fmt/format.h>

#include "tool/command.h"
#include "tool/failure.h"
#include "tool/files.h"
#include "tool/output.h"
#include "tool/progress_bar.h"

namespace zkmb {
namespace {

using ZkMobileBackup::DlxSQLiteParser;

// The sixteen bytes that begin every SQLite database; the last one is a NUL.
const std::string kMagicText("SQLite format 3\0", 16);

class ProgressListener : public ZkMobileBackup::DlxSQLiteParserDelegate {
public:
    explicit ProgressListener(ProgressBar& bar) : bar_(bar) {}

    void parserProcess(const ZkMobileBackup::Dictionary& progress) override {
        const ZkMobileBackup::Value* fraction = progress.find(ZkMobileBackup::kBackupProcessKey);
        if (fraction != nullptr) bar_.show(fraction->numberOr0());
    }

private:
    ProgressBar& bar_;
};

}  // namespace

ParsedDatabase parseDatabase(const std::string& path, Context& context) {
    requireReadableFile(path);
    if (!beginsWith(path, kMagicText)) {
        writeDiagnostic(fmt::format("Warning: '{}' does not begin like a SQLite database.", path));
    }
    ParsedDatabase database{.parser = DlxSQLiteParser::initWithDBPath(path)};
    if (database.parser->sqliteReader() == nullptr) throw Failure(fmt::format("Cannot read '{}' into memory.", path));

    ProgressBar bar(context, std::filesystem::path(path).filename());
    ProgressListener listener(bar);
    database.parser->setSqliteParserDelegate(&listener);
    database.stopRequest = context.interruption.onRequest([parser = database.parser] { parser->setBStop(true); });
    database.completed = database.parser->parser();
    database.parser->setSqliteParserDelegate(nullptr);
    return database;
}

}  // namespace zkmb
