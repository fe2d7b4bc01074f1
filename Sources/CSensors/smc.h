// The system management controller: its keys, counted, listed and read as numbers. Free functions over one process-wide
// connection; callers serialise. None says why it failed.
#pragma once

#include "Platform/SMCService.h"

#include <cstdint>
#include <memory>

namespace vantoro {

/// The service that smc_open opens; without one it fails. Replacing it closes a connection that is open.
void smc_use(std::shared_ptr<SMCService> service);

/// 1 when the connection to "AppleSMC" is open, also when it was before; 0 when there is none or it is refused.
unsigned smc_open();
/// 0 when no connection was open, else the system's own code for the closing.
unsigned smc_close();
/// How many keys the controller holds; 0 when not open or on failure.
std::uint32_t smc_key_count();
/// The key at this index as a text of four characters and a NUL, its type likewise, and its payload's size in bytes. 1
/// on success, 0 when not open or on failure.
unsigned smc_key_at_index(std::uint32_t index, char key_out[5], char type_out[5], std::uint32_t* size_out);
/// The value of a key of four characters as a number. 1 on success; 0, with value_out untouched, when not open, on
/// failure, or when the key's type is not one that can be decoded.
unsigned smc_read_number(const char* key, double* value_out);

} // namespace vantoro
