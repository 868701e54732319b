#include "mxf/index/MXFIndexTableSegment.h"

#include <stdexcept>

#include "util/assertion_failure.h"

namespace bryx::mxfutil {

namespace {

constexpr std::size_t deltaEntrySize = 6;

/// Reads an array of entries that have @p size octets each. An empty one may state any size.
template <class Entry, class Read>
void readArray(const std::vector<std::uint8_t>& octets, std::size_t size, std::vector<Entry>& entries, Read read) {
    klvutil::OctetReader from(octets.data(), octets.size());
    const auto count = from.read<std::uint32_t>();
    const auto stated = from.read<std::uint32_t>();
    if (count != 0 && stated != size) {
        throw std::length_error("unexpected size of an array element");
    }
    if (count > from.left() / size) {
        throw std::length_error("too few octets");
    }
    if (from.left() != count * size) {
        throw std::length_error("too many octets");
    }
    std::vector<Entry> result(count);
    for (Entry& entry : result) {
        read(from, entry);
    }
    entries = std::move(result);
}

template <class Entry, class Write>
std::vector<std::uint8_t> writeArray(std::size_t size, const std::vector<Entry>& entries, Write write) {
    std::vector<std::uint8_t> octets;
    octets.reserve(8 + entries.size() * size);
    klvutil::OctetWriter to(octets);
    to.write(static_cast<std::uint32_t>(entries.size()));
    to.write(static_cast<std::uint32_t>(size));
    for (const Entry& entry : entries) {
        write(to, entry);
    }
    return octets;
}

} // namespace

bool isIndexTableSegmentKey(const KLVKey& key) noexcept {
    KLVKey expected = indexTableSegmentKey;
    if (key[5] == 0x13) {
        expected[5] = 0x13;
    }
    return key == expected;
}

void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& /*segment*/,
                  std::vector<MXFDeltaEntry>& entries) {
    readArray(octets, deltaEntrySize, entries,
              [](klvutil::OctetReader& from, MXFDeltaEntry& entry) { from.read(entry); });
}

void readProperty(const std::vector<std::uint8_t>& octets, const MXFIndexTableSegment& segment,
                  std::vector<MXFIndexEntry>& entries) {
    readArray(octets, indexEntrySize(segment.sliceCount, segment.posTableCount), entries,
              [&](klvutil::OctetReader& from, MXFIndexEntry& entry) {
                  from.read(entry);
                  entry.sliceOffsets.resize(segment.sliceCount);
                  for (std::uint32_t& offset : entry.sliceOffsets) {
                      from.read(offset);
                  }
                  entry.posTable.resize(segment.posTableCount);
                  for (Rational& position : entry.posTable) {
                      from.read(position);
                  }
              });
}

std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& /*segment*/,
                                        const std::vector<MXFDeltaEntry>& entries) {
    return writeArray(deltaEntrySize, entries,
                      [](klvutil::OctetWriter& to, const MXFDeltaEntry& entry) { to.write(entry); });
}

std::vector<std::uint8_t> writeProperty(const MXFIndexTableSegment& segment,
                                        const std::vector<MXFIndexEntry>& entries) {
    return writeArray(indexEntrySize(segment.sliceCount, segment.posTableCount), entries,
                      [&](klvutil::OctetWriter& to, const MXFIndexEntry& entry) {
                          util::require(entry.sliceOffsets.size() == segment.sliceCount, "valid sliceOffsets");
                          util::require(entry.posTable.size() == segment.posTableCount, "valid posTables");
                          to.write(entry);
                          for (const std::uint32_t offset : entry.sliceOffsets) {
                              to.write(offset);
                          }
                          for (const Rational& position : entry.posTable) {
                              to.write(position);
                          }
                      });
}

} // namespace bryx::mxfutil
