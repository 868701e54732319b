#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include <boost/optional.hpp>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"

namespace bryx {

/// What header metadata says about the rest of the file. Positions are those of sets.
struct BRYXMetadataSummary {
    /// A track of a file package with essence in the file.
    struct Track {
        std::uint32_t number;
        Rational editRate;
        std::int64_t duration; ///< negative if it is not known
        std::uint64_t position;
    };
    /// An EssenceContainerData set.
    struct Container {
        std::uint32_t bodySID = 0;
        std::uint32_t indexSID = 0;
        std::uint64_t position = 0;
        bool isSparse = false;   ///< whether parts of the index table may be missing
        bool hasPackage = false; ///< whether the file package that it names is there
        std::vector<Track> tracks;
        boost::optional<Rational> sampleRate; ///< of the file package's descriptor
        boost::optional<KLVKey> label;        ///< of the essence container, by that descriptor
    };

    std::uint64_t position = 0; ///< of the Preface
    KLVKey operationalPattern;
    boost::optional<std::uint16_t> version; ///< major and minor number
    std::vector<KLVKey> essenceContainers;
    boost::optional<bool> ripPresent;
    std::vector<Container> containers;
    std::set<std::uint32_t> sparse; ///< the index SIDs of those whose index tables may lack parts
};

/// An index table, as far as it matters to the rest of the file.
struct BRYXIndexSummary {
    std::uint64_t position = 0; ///< of its first segment
    Rational editRate;
    std::int64_t start = 0;
    std::int64_t end = 0;
    bool isEndless = false;          ///< goes on to the end of the essence
    bool isWhole = true;             ///< whether all segments have been looked at
    std::uint64_t reach = 0;         ///< octets of the essence container that it needs to be there, at least
    std::uint64_t reachPosition = 0; ///< of the segment that tells so
};

/// The index tables of a file, by index SID and body SID.
using BRYXIndexSummaries = std::map<std::pair<std::uint32_t, std::uint32_t>, BRYXIndexSummary>;

/// Sums up the index tables of a file.
class BRYXIndexSummarizer {
public:
    /// All segments have come: checks what each table says as a whole, and sums it up.
    virtual const BRYXIndexSummaries& endFile() = 0;

protected:
    ~BRYXIndexSummarizer() = default;
};

} // namespace bryx
