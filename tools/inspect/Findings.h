#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "inspect/BoundedList.h"
#include "klv/ErrorHandler.h"
#include "klv/Finding.h"
#include "klv/parse_error.h"

/// What inspect itself finds, in the form of the library's own findings.
namespace findings {

inline constexpr util::uuid inspectBase{
    {0xae, 0xa2, 0xdd, 0x36, 0xb1, 0xd1, 0x41, 0xaa, 0xb8, 0x4c, 0xd2, 0xaf, 0x3d, 0x0c, 0x47, 0x00}};

/// The rows of the table: name, base, index, level, message
#define BRYX_INSPECT_FINDINGS(ROW)                                                                                     \
    ROW(emptyFile, inspectBase, 1, fatal, "the file is empty")                                                         \
    ROW(readingFailed, inspectBase, 2, fatal, "reading failed")

BRYX_INSPECT_FINDINGS(BRYX_DEFINE_FINDING)

} // namespace findings

const char* name(klvutil::FindingLevel level);

struct ReportedFinding {
    klvutil::FindingLevel level;
    std::uint64_t position; ///< in octets from the first of the file
    util::uuid id;
    std::string message;
};

/// Collects what the library reports about the file, and what ended the reading if it did not come to the end.
///
/// No report throws: where reading cannot go on, the library throws klvutil::parse_error when the report returns.
class FindingCollector final : public ErrorHandler {
public:
    // More than one locator may come in the course of a file; none is to be used after endStream.
    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override {}
    void endStream() override;

    void warning(const util::uuid& id, const std::string& message) override;
    void error(const util::uuid& id, const std::string& message) override;
    void fatalError(const util::uuid& id, const std::string& message) override;

    /// Reading has ended with @p failure, which may have been reported just before it was thrown.
    /// @param summary what that means for the file
    void readingEnded(const klvutil::parse_error& failure, const std::string& summary);

    /// Reading has ended with @p finding of inspect itself.
    void readingEnded(const klvutil::Finding& finding, const std::string& detail = {});

    /// Where the reader is: the first octet of the KLV triplet that it deals with.
    std::uint64_t position() const;

    /// The number of findings of that level, kept or not.
    std::uint64_t count(klvutil::FindingLevel level) const { return counts_[static_cast<std::size_t>(level)]; }

    /// Calls @p visit with the findings that are kept: the first ones, and the last.
    template <class Visit>
    void forEach(Visit visit) const {
        earlier_.forEach(visit);
        if (latest_) {
            visit(*latest_);
        }
    }

    /// The number of findings before the last that are not kept.
    std::uint64_t omitted() const { return earlier_.omitted(); }

    /// What ended the reading, in words; empty if that is all that its finding says.
    const std::string& summary() const { return summary_; }

private:
    std::uint64_t& counter(klvutil::FindingLevel level) { return counts_[static_cast<std::size_t>(level)]; }

    void add(ReportedFinding finding);

    const Locator* locator_ = nullptr;
    std::uint64_t lastPosition_ = 0;
    std::array<std::uint64_t, 3> counts_{};
    BoundedList<ReportedFinding, 1000> earlier_;
    std::optional<ReportedFinding> latest_; ///< may turn out to be what ended the reading
    std::string summary_;
};
