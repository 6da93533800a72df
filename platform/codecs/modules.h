#pragma once

namespace ZkMobileBackup {

class MovieCodec;
class PictureCodec;

// The codecs, each loaded from its module at the first call and kept until the process ends: what they are built on
// takes long to load, and most runs need none of it. Null when a module cannot be loaded, which is logged once. Any
// thread.
const PictureCodec* pictureCodec();
const MovieCodec* movieCodec();

}  // namespace ZkMobileBackup
