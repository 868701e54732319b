#pragma once

#include <functional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "klv/ErrorHandler.h"
#include "klv/KLVHandler.h"
#include "klv/Locator.h"
#include "mxf/structure/MXFStructureHandler.h"

/// Lines of text, one an event. Several recorders may write to one log.
using Log = std::vector<std::string>;

/// All lines in one, for comparing long logs.
inline std::string joined(const Log& log) {
    std::string text;
    for (const std::string& entry : log) {
        text += (text.empty() ? "" : "; ") + entry;
    }
    return text;
}

/// "name argument argument @position"
template <class... Arguments>
std::string line(const Locator* locator, const char* name, const Arguments&... arguments) {
    std::ostringstream text;
    text << name;
    ((text << ' ' << arguments), ...);
    if (locator != nullptr) {
        text << " @" << std::streamoff{locator->streampos()};
    }
    return text.str();
}

/// Logs every event of a KLV stream with its position. Wants everything, and takes values in the reader's pieces unless
/// told otherwise.
class EventRecorder : public KLVHandler {
public:
    explicit EventRecorder(Log& log, std::string prefix = {}) : log_(log), prefix_(std::move(prefix)) {}

    bool wants = true;
    std::function<void(const std::string&)> onEvent; ///< called with each line
    std::function<bool(std::uint64_t, std::uint64_t&, std::uint64_t&, std::uint8_t*&)> chunk;
    std::string values; ///< all octets delivered
    const Locator* locator = nullptr;

    void setLocator(const Locator& l) override { locator = &l; }
    void startStream(bool accurate) override { add("startStream", accurate); }
    void endStream(bool stopped) override { add("endStream", stopped); }
    void berLengthForm(std::uint8_t form) override { add("form", int{form}); }
    bool startIndividualItem(const KLVKey& k, std::uint64_t n) override { return add("item", id(k), n); }
    void endIndividualItem(const KLVKey& k) override { add("/item", id(k)); }
    bool startLabel(const KLVKey& k) override { return add("label", id(k)); }
    void endLabel(const KLVKey& k) override { add("/label", id(k)); }
    bool startUniversalSet(const KLVKey& k, std::uint64_t n) override { return add("universalSet", id(k), n); }
    void endUniversalSet(const KLVKey& k) override { add("/universalSet", id(k)); }
    bool startLocalSet(const KLVKey& k, std::uint64_t n, KLVFieldForm tag, KLVFieldForm length) override {
        return add("localSet", id(k), n, static_cast<int>(tag), static_cast<int>(length));
    }
    void endLocalSet(const KLVKey& k) override { add("/localSet", id(k)); }
    bool startLocalItem(std::uint32_t tag, std::uint64_t n) override { return add("localItem", tag, n); }
    void endLocalItem(std::uint32_t tag) override { add("/localItem", tag); }
    bool startFixedLengthPack(const KLVKey& k, std::uint64_t n) override { return add("fixedPack", id(k), n); }
    void endFixedLengthPack(const KLVKey& k) override { add("/fixedPack", id(k)); }
    bool startVariableLengthPack(const KLVKey& k, std::uint64_t n, KLVFieldForm length) override {
        return add("variablePack", id(k), n, static_cast<int>(length));
    }
    void endVariableLengthPack(const KLVKey& k) override { add("/variablePack", id(k)); }
    bool startVariableLengthPackItem(std::uint64_t n) override { return add("packItem", n); }
    void endVariableLengthPackItem() override { add("/packItem"); }
    bool startWrapper(const KLVKey& k, std::uint64_t n, KLVWrapperKind kind) override {
        return add("wrapper", id(k), n, static_cast<int>(kind));
    }
    void endWrapper(const KLVKey& k) override { add("/wrapper", id(k)); }
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override {
        return !chunk || chunk(length, offset, size, buffer);
    }
    void value(const std::uint8_t* data, std::uint64_t size) override {
        values.append(data, data + size);
        add("value", size);
    }

private:
    /// Octets 12 to 15 of a key are enough to tell the keys of one test apart.
    static std::string id(const KLVKey& k) { return toString(k).substr(40); }

    template <class... Arguments>
    bool add(const char* name, const Arguments&... arguments) {
        log_.push_back(prefix_ + line(locator, name, arguments...));
        if (onEvent) {
            onEvent(log_.back());
        }
        return wants;
    }

    Log& log_;
    std::string prefix_;
};

/// Logs findings as "warning message @position". Throws at errors if told so.
class FindingRecorder : public ErrorHandler {
public:
    explicit FindingRecorder(Log& log) : log_(log) {}

    int open = 0; ///< streams started and not ended

    void setLocator(const Locator& l) override { locator_ = &l; }
    void startStream() override { ++open; }
    void endStream() override { --open; }
    void warning(const util::uuid&, const std::string& message) override { add("warning", message); }
    void error(const util::uuid&, const std::string& message) override { add("error", message); }
    void fatalError(const util::uuid&, const std::string& message) override { add("fatal", message); }

private:
    void add(const char* level, const std::string& message) { log_.push_back(line(locator_, level, message)); }

    Log& log_;
    const Locator* locator_ = nullptr;
};

/// Logs the frame of a file.
class StructureRecorder : public MXFStructureHandler {
public:
    explicit StructureRecorder(Log& log) : log_(log) {}

    void runIn(std::uint64_t length) override { add("runIn", length); }
    void startStructure() override { add("startStructure"); }
    void endStructure() override { add("endStructure"); }
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override {
        add("partition", int{key[13]}, pack.thisPartition, headerStart);
    }
    void endPartition(const KLVKey& key) override { add("/partition", int{key[13]}); }
    void randomIndex(const MXFRandomIndex& index) override { add("randomIndex", index.size()); }

private:
    template <class... Arguments>
    void add(const char* name, const Arguments&... arguments) {
        log_.push_back(line(nullptr, name, arguments...));
    }

    Log& log_;
};
