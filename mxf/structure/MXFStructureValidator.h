#pragma once

#include <cstdint>
#include <set>

#include "mxf/structure/MXFStructureHandler.h"
#include "util/Api.h"
#include "util/uuid.h"

namespace bryx {

class ErrorHandler;
class Locator;

/// Checks the order and the fields of partitions and of the random index as they are read, reports what it finds and
/// forwards every event unchanged. What it reports is listed in mxf/structure/MXFStructureFindings.h.
///
/// Offsets are checked against where the packs really stand, which the locator tells. It never stops the stream: after
/// an error, that is the error handler's decision. What it keeps of each partition is bounded: beyond as many
/// partitions as a random index pack can list, the random index is no longer compared.
class BRYX_API MXFStructureValidator : public MXFStructureHandler {
public:
    /// The version of ST 377-1 that the fields are checked against.
    static constexpr std::uint16_t majorVersion = 1;
    static constexpr std::uint16_t minorVersion = 3;

    /// @param next where events are forwarded to; not owned. Requires "structure handler is present".
    explicit MXFStructureValidator(MXFStructureHandler* next);
    ~MXFStructureValidator() override;

    /// Where findings go; not owned. Without one, nothing is reported.
    void setErrorHandler(ErrorHandler* errorHandler) { errorHandler_ = errorHandler; }

    /// The positions of the stream that is read; to be set before runIn and startStructure of each file. What is known of
    /// a file that an exception has ended is forgotten. Not owned.
    void setLocator(const Locator& locator);

    /// Reading was stopped by request: what has not come is not missing. Holds until endStructure.
    void stopRequested() { stopped_ = true; }

    void runIn(std::uint64_t length) override;
    void startStructure() override;
    void endStructure() override;
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void endPartition(const KLVKey& key) override;
    void randomIndex(const MXFRandomIndex& index) override;

private:
    enum class State {
        Initial,
        AfterRunIn,
        Started,
        InHeaderOrBody,
        AfterHeaderOrBody,
        InFooter,
        AfterFooter,
        AfterRandomIndex
    };

    /// What is known of the file that is being read.
    struct File {
        std::uint64_t runIn = 0;
        std::int64_t origin = 0; ///< stream position that offsets in the file count from
        bool headerAnnouncesFooter = false;
        bool headerIsClosed = false;
        bool footerSeen = false;
        bool randomIndexSeen = false;
        std::uint64_t footerAnnounced = 0;   ///< the last offset
        std::uint64_t greatestAnnounced = 0; ///< of all of them
        std::uint64_t previousPartition = 0;
        std::uint64_t partitionCount = 0;
        std::set<util::uuid> versionFindings; ///< those that have been reported
        MXFRandomIndex partitions;
    };

    void forgetFile();
    void checkOrder(MXFPartitionKind kind);
    void checkVersion(const MXFPartitionPack& pack);
    void checkOffsets(MXFPartitionKind kind, const MXFPartitionPack& pack, std::uint64_t offset);
    void checkFields(MXFPartitionKind kind, const MXFPartitionPack& pack);
    void checkEnd() const;
    std::int64_t position() const;

    MXFStructureHandler& next_;
    ErrorHandler* errorHandler_ = nullptr;
    const Locator* locator_ = nullptr;
    State state_ = State::Initial;
    bool stopped_ = false;
    File file_;
};

} // namespace bryx
