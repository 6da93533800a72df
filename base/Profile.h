#pragma once

namespace ZkMobileBackup {

/// Which of two manners results come in where they differ.
enum class Profile {
    kLegacy,    ///< exactly as earlier releases gave them, oddities included
    kStandard,  ///< as the published formats demand, so that every reader opens them
};

}  // namespace ZkMobileBackup
