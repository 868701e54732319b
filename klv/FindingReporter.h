#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "klv/Finding.h"
#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "util/Api.h"
#include "util/uuid.h"

namespace bryx {

class ErrorHandler;

/// Reports findings that damage can repeat without end: each once for each thing that it is about, such as a key, a tag or
/// a set. What is wrong with one of them is as a rule wrong wherever it comes.
///
/// Of each kind, nothing more is reported after a thousand things, until clear(): neither the reports nor the memory that
/// they take grow with what is wrong.
class BRYX_API FindingReporter {
public:
    static constexpr std::size_t mostThings = 1000;

    /// @p finding is about @p key, which is its detail. Octet 7 does not tell keys apart.
    void report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const KLVKey& key);
    /// @p finding is about the set with the instance UID @p uid, which is its detail.
    void report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const MXFUID& uid);
    /// @p finding is about what @p number tells from others: a tag, a position, or one of many.
    void report(ErrorHandler* errorHandler, const klvutil::Finding& finding, std::uint64_t number,
                const std::string& detail = {});
    /// The same for what @p subject names of it.
    void report(ErrorHandler* errorHandler, const klvutil::SubjectFinding& finding, std::uint64_t number,
                const std::string& subject, const std::string& detail = {});

    /// Forgets what was reported: a stream or a region begins.
    void clear() { reported_.clear(); }

private:
    using Thing = std::array<std::uint8_t, 16>;

    bool isNew(const klvutil::FindingKind& finding, const Thing& thing);

    std::map<util::uuid, std::set<Thing>> reported_; ///< by the identifier of the kind
};

} // namespace bryx
