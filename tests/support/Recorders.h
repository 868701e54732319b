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
std::string joined(const Log& log);

/// The lines again of a log that has been joined.
Log separated(const std::string& joined);

/// Where @p log is not what was expected: the lines that differ first, with their neighbours. Empty if it is.
std::string difference(const Log& log, const Log& expected);

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

    void setLocator(const Locator& l) override;
    void startStream(bool accurate) override;
    void endStream(bool stopped) override;
    void berLengthForm(std::uint8_t form) override;
    bool startIndividualItem(const KLVKey& k, std::uint64_t n) override;
    void endIndividualItem(const KLVKey& k) override;
    bool startLabel(const KLVKey& k) override;
    void endLabel(const KLVKey& k) override;
    bool startUniversalSet(const KLVKey& k, std::uint64_t n) override;
    void endUniversalSet(const KLVKey& k) override;
    bool startLocalSet(const KLVKey& k, std::uint64_t n, KLVFieldForm tag, KLVFieldForm length) override;
    void endLocalSet(const KLVKey& k) override;
    bool startLocalItem(std::uint32_t tag, std::uint64_t n) override;
    void endLocalItem(std::uint32_t tag) override;
    bool startFixedLengthPack(const KLVKey& k, std::uint64_t n) override;
    void endFixedLengthPack(const KLVKey& k) override;
    bool startVariableLengthPack(const KLVKey& k, std::uint64_t n, KLVFieldForm length) override;
    void endVariableLengthPack(const KLVKey& k) override;
    bool startVariableLengthPackItem(std::uint64_t n) override;
    void endVariableLengthPackItem() override;
    bool startWrapper(const KLVKey& k, std::uint64_t n, KLVWrapperKind kind) override;
    void endWrapper(const KLVKey& k) override;
    bool getValueBuffer(std::uint64_t length, std::uint64_t& offset, std::uint64_t& size,
                        std::uint8_t*& buffer) override;
    void value(const std::uint8_t* data, std::uint64_t size) override;

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

    void setLocator(const Locator& l) override;
    void startStream() override;
    void endStream() override;
    void warning(const util::uuid&, const std::string& message) override;
    void error(const util::uuid&, const std::string& message) override;
    void fatalError(const util::uuid&, const std::string& message) override;

private:
    void add(const char* level, const std::string& message) { log_.push_back(line(locator_, level, message)); }

    Log& log_;
    const Locator* locator_ = nullptr;
};

/// Logs the frame of a file.
class StructureRecorder : public MXFStructureHandler {
public:
    explicit StructureRecorder(Log& log) : log_(log) {}

    void runIn(std::uint64_t length) override;
    void startStructure() override;
    void endStructure() override;
    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;
    void endPartition(const KLVKey& key) override;
    void randomIndex(const MXFRandomIndex& index) override;

private:
    template <class... Arguments>
    void add(const char* name, const Arguments&... arguments) {
        log_.push_back(line(nullptr, name, arguments...));
    }

    Log& log_;
};
