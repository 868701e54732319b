#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>

#include <boost/optional.hpp>

#include "mxf/essence/MXFGCStructureFilter.h"
#include "mxf/essence/MXFPDProxySystemParser.h"
#include "mxf/essence/MXFSDTICPSystemHandler.h"
#include "mxf/essence/detail/MXFGCKnownKinds.h"
#include "validation/internal/BRYXCrossValidator.h"

namespace bryx {

class TimecodeCalculator;

/// Checks system items, and the content packages that they stand in, and passes them on.
class BRYXSystemValidator final : public MXFSDTICPSystemHandler,
                                  public MXFGCStructureFilter,
                                  public MXFPDProxySystemHandler,
                                  public BRYXValidator {
public:
    /// @param next not owned, as are @p nextStructure and @p cross
    BRYXSystemValidator(MXFSDTICPSystemHandler& next, MXFGCStructureHandler& nextStructure, BRYXCrossValidator& cross,
                        BRYXValidationMode::Enum mode);
    ~BRYXSystemValidator() override;

    /// Not owned; null if nobody wants proxy system items.
    void setNextPDProxySystemHandler(MXFPDProxySystemHandler* handler) { nextProxy_ = handler; }

    void systemMetadata(const MXFSystemMetadataPack& pack) override;
    void packageMetadata(const MXFGCItems& items) override { next_.packageMetadata(items); }
    void pictureMetadata(const MXFGCItems& items) override { next_.pictureMetadata(items); }
    void soundMetadata(const MXFGCItems& items) override { next_.soundMetadata(items); }
    void dataMetadata(const MXFGCItems& items) override { next_.dataMetadata(items); }
    void controlData(const std::uint8_t* data, std::size_t size) override { next_.controlData(data, size); }
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& items) override;

    void startStream(std::uint64_t kagSize) override;
    void endStream() override;
    void startContentPackage() override;
    void endContentPackage() override;
    void startElement(const KLVKey& key) override;

private:
    static constexpr std::size_t kinds = 4; ///< of essence
    /// What the content packages of one essence container have had so far.
    struct Container {
        bool miscountsElements = false; ///< reported
        bool lacksSystemItem = false;   ///< reported
        std::uint8_t wrongBits = 0;     ///< of bitmaps; reported
        boost::optional<MXFSystemMetadataPack> first;
        // Of the last one. What it has in common with the one before has been told.
        KLVKey label;
        std::uint8_t rate = 0;
        std::uint16_t continuityCount = 0;
        std::uint16_t step = 1;             ///< of the continuity count
        boost::optional<Timecode> timecode; ///< of the last one
    };

    void checkPack(const MXFSystemMetadataPack& pack) const;
    void checkTimecode(const MXFSystemMetadataPack& pack);
    MXFGCEssenceKind classify(const KLVKey& key);
    void checkBitmap();
    void checkCounts();
    void checkKinds();
    void reportCount(std::size_t kind);
    /// Whether @p next follows @p timecode at @p rate.
    bool follows(const Timecode& timecode, const Timecode& next, std::uint8_t rate);

    MXFSDTICPSystemHandler& next_;
    BRYXCrossValidator& cross_;
    MXFPDProxySystemHandler* nextProxy_ = nullptr;

    std::map<std::uint32_t, Container> containers_; ///< by body SID
    Container* container_ = nullptr;                ///< the current one

    // The content package.
    bool hasSystemItem_ = false;
    boost::optional<std::uint8_t> bitmap_;
    std::uint64_t packPosition_ = 0;
    // By MXFGCEssenceKind, without None:
    std::array<unsigned, kinds> elements_{};
    std::array<unsigned, kinds> announced_{};      ///< by the keys of the first
    std::array<std::uint64_t, kinds> positions_{}; ///< of the first, where there are any

    mxfutil::detail::MXFGCKnownKinds knownKinds_; ///< of the body that is being read

    std::unique_ptr<TimecodeCalculator> calculator_;
    std::uint8_t calculatorRate_ = 0;
    bool calculatorDrops_ = false;
};

} // namespace bryx
