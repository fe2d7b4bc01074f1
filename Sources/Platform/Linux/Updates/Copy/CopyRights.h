// Who may do what with the files of a copy.
#pragma once

#include <optional>
#include <string>

namespace vantoro {

/// Gives the new copy's folders and files the modes and the group of the old one's of the same path, and the owner too
/// where root does it; what is new in it has those of the old copy's folder. A file can be run where it could before
/// this call, and no right to become somebody else is handed on. The path that was refused, with errno, or nothing.
std::optional<std::string> takeRightsOver(const std::string& newCopy, const std::string& oldCopy);

} // namespace vantoro
