#include "support/Recorders.h"

#include <algorithm>
#include <cstddef>

std::string joined(const Log& log) {
    std::string text;
    for (const std::string& entry : log) {
        text += (text.empty() ? "" : "; ") + entry;
    }
    return text;
}

Log separated(const std::string& joined) {
    Log log;
    for (std::size_t begin = 0; begin < joined.size();) {
        const std::size_t end = std::min(joined.find("; ", begin), joined.size());
        log.push_back(joined.substr(begin, end - begin));
        begin = end + 2;
    }
    return log;
}

std::string difference(const Log& log, const Log& expected) {
    constexpr std::size_t neighbours = 2;
    constexpr std::size_t shown = 4; // of lines that differ
    const std::size_t shorter = std::min(log.size(), expected.size());
    std::size_t same = 0; // lines at the beginning
    while (same < shorter && log[same] == expected[same]) {
        ++same;
    }
    if (same == log.size() && same == expected.size()) {
        return {};
    }
    std::size_t after = 0; // lines at the end that are the same
    while (after < shorter - same && log[log.size() - 1 - after] == expected[expected.size() - 1 - after]) {
        ++after;
    }
    std::ostringstream text;
    const auto show = [&text](const char* mark, const Log& lines, std::size_t begin, std::size_t end,
                              std::size_t most) {
        for (std::size_t i = begin; i < std::min(end, begin + most); ++i) {
            text << "\n  " << mark << ' ' << lines[i];
        }
        if (end > begin + most) {
            text << "\n  " << mark << " ... and " << end - begin - most << " lines more";
        }
    };
    text << "line " << same + 1 << " of " << log.size() << " differs, where " << expected.size()
         << " lines are expected (-):";
    show(" ", log, same - std::min(same, neighbours), same, neighbours);
    show("-", expected, same, expected.size() - after, shown);
    show("+", log, same, log.size() - after, shown);
    show(" ", log, log.size() - after, log.size() - after + std::min(after, neighbours), neighbours);
    return text.str();
}

void EventRecorder::setLocator(const Locator& l) {
    locator = &l;
}

void EventRecorder::startStream(bool accurate) {
    add("startStream", accurate);
}

void EventRecorder::endStream(bool stopped) {
    add("endStream", stopped);
}

void EventRecorder::berLengthForm(std::uint8_t form) {
    add("form", int{form});
}

bool EventRecorder::startIndividualItem(const KLVKey& k, std::uint64_t n) {
    return add("item", id(k), n);
}

void EventRecorder::endIndividualItem(const KLVKey& k) {
    add("/item", id(k));
}

bool EventRecorder::startLabel(const KLVKey& k) {
    return add("label", id(k));
}

void EventRecorder::endLabel(const KLVKey& k) {
    add("/label", id(k));
}

bool EventRecorder::startUniversalSet(const KLVKey& k, std::uint64_t n) {
    return add("universalSet", id(k), n);
}

void EventRecorder::endUniversalSet(const KLVKey& k) {
    add("/universalSet", id(k));
}

bool EventRecorder::startLocalSet(const KLVKey& k, std::uint64_t n, KLVFieldForm tag, KLVFieldForm length) {
    return add("localSet", id(k), n, static_cast<int>(tag), static_cast<int>(length));
}

void EventRecorder::endLocalSet(const KLVKey& k) {
    add("/localSet", id(k));
}

bool EventRecorder::startLocalItem(std::uint32_t tag, std::uint64_t n) {
    return add("localItem", tag, n);
}

void EventRecorder::endLocalItem(std::uint32_t tag) {
    add("/localItem", tag);
}

bool EventRecorder::startFixedLengthPack(const KLVKey& k, std::uint64_t n) {
    return add("fixedPack", id(k), n);
}

void EventRecorder::endFixedLengthPack(const KLVKey& k) {
    add("/fixedPack", id(k));
}

bool EventRecorder::startVariableLengthPack(const KLVKey& k, std::uint64_t n, KLVFieldForm length) {
    return add("variablePack", id(k), n, static_cast<int>(length));
}

void EventRecorder::endVariableLengthPack(const KLVKey& k) {
    add("/variablePack", id(k));
}

bool EventRecorder::startVariableLengthPackItem(std::uint64_t n) {
    return add("packItem", n);
}

void EventRecorder::endVariableLengthPackItem() {
    add("/packItem");
}

bool EventRecorder::startWrapper(const KLVKey& k, std::uint64_t n, KLVWrapperKind kind) {
    return add("wrapper", id(k), n, static_cast<int>(kind));
}

void EventRecorder::endWrapper(const KLVKey& k) {
    add("/wrapper", id(k));
}

bool EventRecorder::getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                                   std::uint8_t*& buffer) {
    return !chunk || chunk(length, offset, size, buffer);
}

void EventRecorder::value(const std::uint8_t* data, std::uint64_t size) {
    values.append(data, data + size);
    add("value", size);
}

void FindingRecorder::setLocator(const Locator& l) {
    locator_ = &l;
}

void FindingRecorder::startStream() {
    ++open;
}

void FindingRecorder::endStream() {
    --open;
}

void FindingRecorder::warning(const util::uuid&, const std::string& message) {
    add("warning", message);
}

void FindingRecorder::error(const util::uuid&, const std::string& message) {
    add("error", message);
}

void FindingRecorder::fatalError(const util::uuid&, const std::string& message) {
    add("fatal", message);
}

void StructureRecorder::runIn(std::uint64_t length) {
    add("runIn", length);
}

void StructureRecorder::startStructure() {
    add("startStructure");
}

void StructureRecorder::endStructure() {
    add("endStructure");
}

void StructureRecorder::startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) {
    add("partition", int{key[13]}, pack.thisPartition, headerStart);
}

void StructureRecorder::endPartition(const KLVKey& key) {
    add("/partition", int{key[13]});
}

void StructureRecorder::randomIndex(const MXFRandomIndex& index) {
    add("randomIndex", index.size());
}
