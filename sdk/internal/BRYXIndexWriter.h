#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <boost/optional.hpp>

#include "mxf/essence/MXFGCIndexer.h"
#include "sdk/BRYXWriter.h"

namespace bryx {

class KLVHandler;
class Locator;

/// The index table of one essence container: notes what is written of that, and sends segments; those that the caller gave,
/// if there are any.
class BRYXIndexWriter {
public:
    /// Segments for one partition. They take far more memory than what they are made of, so each is made when it is
    /// sent, and again when it is sent once more.
    struct Part {
        BRYXIndexWriter* table = nullptr;                         ///< null if there are no segments
        const std::vector<MXFIndexTableSegment>* given = nullptr; ///< the segments; null if the indexer makes them
        std::int64_t first = 0;                                   ///< edit unit
        std::vector<std::int64_t> ends;                           ///< of the batches, each of as few segments as can be
        std::size_t number = 0;                                   ///< of the first segment in the table
        std::uint64_t octets = 0;
    };

    /// @param container outlives this, as does what follows
    /// @param next what comes behind the indexer
    BRYXIndexWriter(const BRYXEssenceContainer& container, const BRYXWriterConfiguration& configuration,
                    MXFGCStructureHandler& next, const Locator& locator);
    ~BRYXIndexWriter();

    const BRYXEssenceContainer& container() const noexcept { return container_; }
    MXFGCIndexer& indexer();
    std::uint64_t contentPackages() const;

    /// The edit units in @p octets of essence: the content packages. None if something else has been written as well, or a
    /// single one, in which all may be wrapped as a clip, or if the caller's table behind them may have others.
    boost::optional<std::uint64_t> editUnits(std::uint64_t octets) const;

    /// The next content package comes into another partition: where its body begins, and how many octets of the essence
    /// container came before.
    void startBody(std::uint64_t position, std::uint64_t octetsBefore);
    void endBody(std::uint64_t position);

    /// Whether there is an index table, which the writer makes.
    bool isOwn() const { return exists() && container_.segments.empty(); }

    /// Whether the whole table comes before the essence, as the caller gave it.
    bool isBefore() const;

    /// Whether content packages, @p octets in all, have come in the sizes that a table before them says.
    bool isAsAnnounced(std::uint64_t octets) const;

    /// The segments for what has been written since the last ones, if they stand behind their essence.
    Part next();

    /// The whole table, for an essence container of @p octets. What stands in partitions already is repeated as it is.
    Part whole(std::uint64_t octets);

    /// Sends segments, with what they do not say filled in, and returns their number. One that was sent before has the
    /// instance UID that it had.
    std::size_t send(KLVHandler& handler, const Part& part);

private:
    class Indexer;

    bool exists() const {
        return configuration_.indexPlacement != BRYXWriterConfiguration::IndexPlacement::None &&
               container_.indexSID != 0;
    }
    std::size_t measure(Part& part);

    const BRYXEssenceContainer& container_;
    const BRYXWriterConfiguration& configuration_;
    std::unique_ptr<Indexer> indexer_;
    std::vector<std::int64_t> indexedTo_;        ///< where the batches of segments end that stand in partitions
    std::size_t indexed_ = 0;                    ///< the segments in these batches
    std::vector<MXFUID> segmentUIDs_;            ///< of the segments of the table, as far as they have been made
    std::vector<MXFIndexTableSegment> constant_; ///< the whole table, if it needs no entries
};

} // namespace bryx
