#pragma once

#include <cstdint>

#include <boost/optional.hpp>

#include "inspect/ElementCounter.h"
#include "inspect/Findings.h"
#include "sdk/BRYX.h"
#include "shared/PackageCounter.h"
#include "shared/ProgressBar.h"

/// Has the reader take for essence what inspect does.
class EssenceClassifier final : public BRYXGCEssenceKeyClassifier {
public:
    MXFGCEssenceKind classify(const KLVKey& key) const override { return classifyEssence(key); }
};

/// Counts what the bodies of the partitions hold, and keeps the timecodes that the system items of the first and of the
/// last content package have. It wants no essence, so that the reader passes over it, with a seek where the stream allows
/// it.
///
/// An element is counted when it ends: one that the end of the file cuts off has a start event but no end event.
class BodyCounter final : public PackageCounter,
                          public DullMXFGCEssenceHandler,
                          public DullMXFSDTICPSystemHandler,
                          public MXFPDProxySystemHandler {
public:
    BodyCounter(const FindingCollector& positions, ProgressBar& progress)
        : positions_(positions), progress_(progress) {}

    void startContentPackage() override;
    void startElement(const KLVKey& key) override;
    void endElement(const KLVKey& key) override;

    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override;
    void systemMetadata(const MXFSystemMetadataPack& pack) override;
    void pdProxyMetadata(const MXFPDProxyMetadata& metadata, const MXFGCItems& items) override;

    const ElementCounter& essence() const { return essence_; }
    std::uint64_t systemElements() const { return systemElements_; }
    std::uint64_t packages() const { return packages_; }
    const boost::optional<Timecode>& firstTimecode() const { return first_; }
    const boost::optional<Timecode>& lastTimecode() const { return last_; }

private:
    void found(const boost::optional<Timecode>& timecode);

    const FindingCollector& positions_;
    ProgressBar& progress_;
    std::uint64_t length_ = 0; ///< of the element that started last
    ElementCounter essence_;
    std::uint64_t systemElements_ = 0;
    std::uint64_t packages_ = 0;
    boost::optional<Timecode> first_;
    boost::optional<Timecode> last_;
};
