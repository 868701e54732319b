#pragma once

#include <cstdint>
#include <istream>
#include <set>

namespace bryx {

/// Reads a file that was written from where it begins, and throws VerifyingKLVHandler::exception if anything is wrong with
/// it: whatever a reader reports as an error, header metadata without sets, and index entries that lead to no element.
///
/// @param indexed the body SIDs of the essence containers whose index tables are followed
void verifyFile(std::istream& file, std::streampos start, const std::set<std::uint32_t>& indexed);

} // namespace bryx
