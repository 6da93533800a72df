#include "tests/ZkMobileBackup/backup/Sha1Failures.h"

#include <optional>

#include "ZkMobileBackup/backup/Sha1.h"

namespace ZkMobileBackup {
namespace {

struct Failure {
    Sha1Failures::Step step;
    int status;
};

std::optional<Failure> wanted;

bool failsAt(Sha1Failures::Step step) {
    return wanted && wanted->step == step;
}

}  // namespace

Sha1Failures::Sha1Failures(Step step, int status) {
    wanted = Failure{step, status};
}

Sha1Failures::~Sha1Failures() {
    wanted.reset();
}

extern "C" {

int __real_SHA1Reset(SHA1Context* context);
int __real_SHA1Input(SHA1Context* context, const std::uint8_t* message, unsigned int length);
int __real_SHA1Result(SHA1Context* context, std::uint8_t* digest);

int __wrap_SHA1Reset(SHA1Context* context);
int __wrap_SHA1Input(SHA1Context* context, const std::uint8_t* message, unsigned int length);
int __wrap_SHA1Result(SHA1Context* context, std::uint8_t* digest);

int __wrap_SHA1Reset(SHA1Context* context) {
    return failsAt(Sha1Failures::Step::kReset) ? wanted->status : __real_SHA1Reset(context);
}

int __wrap_SHA1Input(SHA1Context* context, const std::uint8_t* message, unsigned int length) {
    return failsAt(Sha1Failures::Step::kInput) ? wanted->status : __real_SHA1Input(context, message, length);
}

int __wrap_SHA1Result(SHA1Context* context, std::uint8_t* digest) {
    return failsAt(Sha1Failures::Step::kResult) ? wanted->status : __real_SHA1Result(context, digest);
}
}

}  // namespace ZkMobileBackup
