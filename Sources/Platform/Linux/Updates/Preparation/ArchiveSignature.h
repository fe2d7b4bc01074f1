// Whether an archive is the maintainer's.
#pragma once

#include <string>

namespace vantoro {

/// Ed25519 (libsodium) over everything that the open file holds; key and signature in base64. False for a file that
/// cannot be read and for a key or signature that is none.
bool isSignedBy(const std::string& publicKey, const std::string& signature, int archive);

} // namespace vantoro
