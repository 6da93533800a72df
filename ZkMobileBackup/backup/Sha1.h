#pragma once

#include <cstdint>

#include "base/Api.h"

// The reference interface of RFC 3174 to the SHA-1 digest, global and callable from C. A context belongs to its caller,
// needs no release, and is used by one thread at a time.

/// What the functions return.
enum {
    shaSuccess = 0,
    shaNull,          ///< a null pointer
    shaInputTooLong,  ///< the message reaches 2^64 bits
    shaStateError     ///< input after the result was taken
};

/// Bytes of a digest.
enum { SHA1HashSize = 20 };

/// The state of one digest. Its members are the functions' own.
struct SHA1Context {
    std::uint64_t digestState[12];  // holds the SHA_CTX of libcrypto
    std::uint64_t messageLength;    // bytes so far
    std::uint8_t digest[SHA1HashSize];
    std::int32_t computed;  // whether `digest` is final
    int corrupted;          // the first error, which stays
};

extern "C" {

/// Makes a context ready for a new message.
ZKMB_API int SHA1Reset(SHA1Context* context);

/// Adds bytes to the message. No bytes at all are no error, whatever the pointers. After an error the same error comes
/// back until the next reset.
ZKMB_API int SHA1Input(SHA1Context* context, const std::uint8_t* message, unsigned int length);

/// Ends the message and writes its digest of SHA1HashSize bytes. A second call writes the same digest again.
ZKMB_API int SHA1Result(SHA1Context* context, std::uint8_t* digest);
}
