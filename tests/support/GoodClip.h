#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "klv/ValueCoding.h"
#include "mxf/metadata/model/MXFSetDeclaration.h"
#include "sdk/BRYXWriter.h"

namespace bryx {
class MXFSetDescription;
class Preface;
} // namespace bryx

/// What a GoodClip is like.
struct ClipOptions {
    using Placement = BRYXWriterConfiguration::IndexPlacement;

    int frames = 10;
    std::size_t pictureSize = 700; ///< octets, and up to 99 more unless all edit units have one size
    std::uint64_t partitionDuration = 5;
    Placement placement = Placement::AfterEssence;
    bool isConstant = false; ///< all edit units have one size
    bool isClip = false;     ///< all edit units, of one size, are in one element
    bool hasSystemItems = true;
    bool hasSound = true;
    bool hasSequences = true; ///< or else a component alone on each track
    bool canSeek = true;
    bool hasEssence = true;
    bool hasGenericStream = false;
    bool hasEmptyContainer = false;       ///< an essence container without essence, with body SID 3, before the other
    std::function<void(Preface&)> change; ///< of the model before it is written
};

/// The smallest clip with two body partitions, system items and a generic stream, for attacks on each of its octets.
ClipOptions smallClip();

/// A clip as good as can be: the strictest checks have nothing to say of it. Values in it can be altered.
class GoodClip {
public:
    static constexpr KLVKey multiple = klvutil::key("060e2b34.04010103.0d010301.027f0100");
    static constexpr KLVKey frames = klvutil::key("060e2b34.04010101.0d010301.02057f01");
    static constexpr KLVKey waves = klvutil::key("060e2b34.04010101.0d010301.02060100");
    static constexpr KLVKey picture = klvutil::key("060e2b34.01020101.0d010301.15010201");
    static constexpr KLVKey sound1 = klvutil::key("060e2b34.01020101.0d010301.16020101");
    static constexpr KLVKey sound2 = klvutil::key("060e2b34.01020101.0d010301.16020102");
    static constexpr KLVKey timecodeData = klvutil::key("060e2b34.04010101.01030201.01000000");
    static constexpr KLVKey pictureData = klvutil::key("060e2b34.04010101.01030202.01000000");
    static constexpr KLVKey soundData = klvutil::key("060e2b34.04010101.01030202.02000000");
    static constexpr KLVKey dataData = klvutil::key("060e2b34.04010101.01030202.03000000");

    struct Triplet {
        std::uint64_t position;
        std::uint64_t value; ///< where it begins
        std::uint64_t end;
        KLVKey key;
    };

    explicit GoodClip(ClipOptions options = {});

    std::string octets;
    std::vector<std::uint64_t> altered; ///< positions of the triplets in which something was altered

    /// Writes such a clip again.
    void write(BRYXWriter& writer) const;

    /// The triplets with @p key, in the order of the file.
    std::vector<Triplet> all(const KLVKey& key) const;
    std::vector<Triplet> packs() const;

    /// Replaces octets of @p triplet, counted from its key.
    void put(const Triplet& triplet, std::uint64_t offset, const std::vector<std::uint8_t>& value);

    /// Sets a property of the @p index-th set of a class in each header metadata region, or in the first alone.
    template <class Set, class Value>
    void set(std::size_t index, const char* property, const Value& value, bool everywhere = true) {
        setProperty(mxfutil::describeSet<Set>(), index, property, klvutil::writeValue(value), everywhere);
    }

    /// Gives the @p index-th set of a class a key that nobody knows.
    template <class Set>
    void hide(std::size_t index = 0) {
        hideSet(mxfutil::describeSet<Set>(), index);
    }

    /// The value of a property as it is in the first header metadata region.
    template <class Set, class Value>
    Value get(std::size_t index, const char* property) const {
        return klvutil::readValue<Value>(getProperty(mxfutil::describeSet<Set>(), index, property));
    }

    /// Gives a property of four octets the tag of one that sets of its class do not have.
    template <class Set>
    void forget(std::size_t index, const char* property) {
        forgetProperty(mxfutil::describeSet<Set>(), index, property);
    }

    /// Leaves a property without the one reference that it holds, whose octets make another property.
    template <class Set>
    void empty(std::size_t index, const char* property) {
        emptyProperty(mxfutil::describeSet<Set>(), index, property);
    }

    /// What was altered shows in the @p index-th set of a class.
    template <class Set>
    void at(std::size_t index = 0) {
        showAt(mxfutil::describeSet<Set>(), index);
    }
    /// The same, in the last header metadata region alone.
    void inLastRegion() { altered.erase(altered.begin(), altered.end() - 1); }

    /// Sets a field of the @p index-th partition pack.
    template <class Value>
    void setPack(std::size_t index, const char* field, const Value& value) {
        setPackField(index, field, klvutil::writeValue(value));
    }

    /// Sets octets of a property of the @p index-th index table segment, @p offset octets into its value.
    template <class Value>
    void setSegment(std::size_t index, std::uint16_t tag, const Value& value, std::uint64_t offset = 0) {
        setSegmentItem(index, tag, klvutil::writeValue(value), offset);
    }

    /// Sets a field of the @p index-th entry of a segment; @p offset as in an index entry.
    template <class Value>
    void setEntry(std::size_t segment, std::size_t index, std::uint64_t offset, const Value& value) {
        constexpr std::uint64_t oneSlice = mxfutil::indexEntrySize(1, 0);
        setSegment(segment, 0x3F0A, value, 8 + index * oneSlice + offset);
    }

private:
    using Octets = std::vector<std::uint8_t>;

    void setProperty(const MXFSetDescription& set, std::size_t index, const char* name, const Octets& value,
                     bool everywhere);
    void hideSet(const MXFSetDescription& set, std::size_t index);
    Octets getProperty(const MXFSetDescription& set, std::size_t index, const char* name) const;
    void forgetProperty(const MXFSetDescription& set, std::size_t index, const char* name);
    void emptyProperty(const MXFSetDescription& set, std::size_t index, const char* name);
    void showAt(const MXFSetDescription& set, std::size_t index);
    void setPackField(std::size_t index, const char* field, const Octets& value);
    void setSegmentItem(std::size_t index, std::uint16_t tag, const Octets& value, std::uint64_t offset);

    std::vector<Triplet> inEachRegion(const MXFSetDescription& set, std::size_t index) const;
    std::uint16_t tagOf(const MXFSetDescription& set, const char* name) const;
    /// Where the value of an item begins, and its size.
    std::pair<std::uint64_t, std::uint64_t> itemAt(const Triplet& set, std::uint16_t tag) const;
    void walk();

    ClipOptions options_;
    std::vector<Triplet> triplets_;
};
