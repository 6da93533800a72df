// A context that nobody releases cannot hold libcrypto's newer, heap-based handle, so the plain structure it is.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "ZkMobileBackup/backup/Sha1.h"

#include <algorithm>
#include <iterator>
#include <openssl/sha.h>
#include <type_traits>

namespace {

static_assert(sizeof(SHA_CTX) <= sizeof(SHA1Context::digestState));
static_assert(alignof(SHA_CTX) <= alignof(SHA1Context));
static_assert(std::is_trivially_copyable_v<SHA_CTX>);
static_assert(int{SHA1HashSize} == SHA_DIGEST_LENGTH);

/// From here on the length in bits no longer fits into the 64 bits that end a message.
constexpr std::uint64_t kTooLong = std::uint64_t{1} << 61;

SHA_CTX* stateOf(SHA1Context& context) {
    return reinterpret_cast<SHA_CTX*>(context.digestState);
}

int fail(SHA1Context& context, int error) {
    context.corrupted = error;
    return error;
}

}  // namespace

int SHA1Reset(SHA1Context* context) {
    if (context == nullptr) return shaNull;
    *context = SHA1Context{};
    return SHA1_Init(stateOf(*context)) == 1 ? shaSuccess : fail(*context, shaStateError);
}

int SHA1Input(SHA1Context* context, const std::uint8_t* message, unsigned int length) {
    if (length == 0) return shaSuccess;
    if (context == nullptr || message == nullptr) return shaNull;
    if (context->computed != 0) return fail(*context, shaStateError);
    if (context->corrupted != shaSuccess) return context->corrupted;
    if (context->messageLength >= kTooLong - length) return fail(*context, shaInputTooLong);
    context->messageLength += length;
    return SHA1_Update(stateOf(*context), message, length) == 1 ? shaSuccess : fail(*context, shaStateError);
}

int SHA1Result(SHA1Context* context, std::uint8_t* digest) {
    if (context == nullptr || digest == nullptr) return shaNull;
    if (context->corrupted != shaSuccess) return context->corrupted;
    if (context->computed == 0) {
        if (SHA1_Final(context->digest, stateOf(*context)) != 1) return fail(*context, shaStateError);
        context->computed = 1;
    }
    std::ranges::copy(context->digest, digest);
    return shaSuccess;
}
