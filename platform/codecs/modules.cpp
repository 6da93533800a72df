#include "platform/codecs/modules.h"

#include <dlfcn.h>
#include <string>

#include "base/Log.h"
#include "base/OwnFile.h"

namespace ZkMobileBackup {

namespace {

/// The function that a module offers under a name; null, with a line in the log, when there is none.
void* functionOfModule(const char* module, const char* function) {
    // The folder's name has the version: what passes between library and module is known to those of one version only.
    const std::string folder = companionFolder(ZKMB_MODULE_FOLDER, "lib/" ZKMB_MODULE_FOLDER);
    const std::string path = folder + "/" + module + ".so";
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    void* const address = handle == nullptr ? nullptr : ::dlsym(handle, function);
    if (address == nullptr) {
        const char* const reason = ::dlerror();
        writeLog("Cannot load " + path + ": " + (reason == nullptr ? "unknown reason" : reason));
    }
    return address;
}

/// The codec that a module's function hands out.
template <typename Codec>
const Codec* codecOfModule(const char* module, const char* function) {
    using Maker = const Codec* (*)();
    const auto maker = reinterpret_cast<Maker>(functionOfModule(module, function));
    return maker == nullptr ? nullptr : maker();
}

}  // namespace

const PictureCodec* pictureCodec() {
    static const PictureCodec* const codec = codecOfModule<PictureCodec>("vips_codec", "zkmbPictureCodec");
    return codec;
}

const MovieCodec* movieCodec() {
    static const MovieCodec* const codec = codecOfModule<MovieCodec>("ffmpeg_codec", "zkmbMovieCodec");
    return codec;
}

}  // namespace ZkMobileBackup
