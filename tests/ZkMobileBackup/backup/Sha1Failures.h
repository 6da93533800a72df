#pragma once

namespace ZkMobileBackup {

/// Makes steps of the digest fail while it lives. The linker leads calls of the three digest functions through
/// Sha1Failures.cpp.
class Sha1Failures {
public:
    enum class Step { kReset, kInput, kResult };

    Sha1Failures(Step step, int status);
    ~Sha1Failures();
    Sha1Failures(const Sha1Failures&) = delete;
    Sha1Failures& operator=(const Sha1Failures&) = delete;
};

}  // namespace ZkMobileBackup
