#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "klv/DullErrorHandler.h"
#include "support/GoodClip.h"
#include "validation/BRYXChecks.h"

/// Keeps what is reported.
struct Findings : DullErrorHandler {
    struct Finding {
        util::uuid id;
        klvutil::FindingLevel level;
        std::uint64_t position;
        std::string message;
    };

    std::vector<Finding> all;
    const Locator* locator = nullptr;

    void setLocator(const Locator& l) override { locator = &l; }
    void warning(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::warning, m); }
    void error(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::error, m); }
    void fatalError(const util::uuid& id, const std::string& m) override { add(id, klvutil::FindingLevel::fatal, m); }

    std::set<std::uint64_t> positionsOf(const klvutil::FindingKind& finding) const;

private:
    void add(const util::uuid& id, klvutil::FindingLevel level, const std::string& message);
};

/// What has a handler: the structure, header metadata as well, everything.
enum class Wanted : std::uint8_t { Structure, Metadata, Everything };

Findings validate(const std::string& octets, BRYXValidationMode::Enum mode, Wanted wanted = Wanted::Everything);

/// A fault that one altered value makes in a good file, and the check that finds it where it is.
struct Fault {
    using Plant = std::function<void(GoodClip&)>;

    // Not inline, since tables have many of them.
    Fault(const BRYXCheck& check, Plant plant, const ClipOptions& options = {}, Wanted wanted = Wanted::Everything);
    Fault(const Fault& other);
    ~Fault();

    const BRYXCheck& check;
    Plant plant;
    ClipOptions options;
    Wanted wanted;
};

// A fault for each check, by subject. In a GoodClip, partitions are header, body, body (with the index of the first),
// footer; sets of one class stand in the order in which the model owns them: the material package comes first.

std::vector<Fault> structureFaults();
std::vector<Fault> packageFaults();
std::vector<Fault> descriptorFaults();
std::vector<Fault> essenceFaults();
std::vector<Fault> indexFaults();

// Clips with one thing or another.

ClipOptions with(void (*change)(ClipOptions&));
extern const ClipOptions oneSegment;
extern const ClipOptions constant;
extern const ClipOptions emptyContainer;
extern const ClipOptions pictureOnly;

// What alters one value.

template <class Value>
Fault::Plant pack(std::size_t index, const char* field, const Value& value) {
    return [=](GoodClip& clip) { clip.setPack(index, field, value); };
}
template <class Set, class Value>
Fault::Plant set(std::size_t index, const char* property, const Value& value) {
    return [=](GoodClip& clip) { clip.set<Set>(index, property, value); };
}
template <class Value>
Fault::Plant segment(std::size_t index, std::uint16_t tag, const Value& value, std::uint64_t offset = 0) {
    return [=](GoodClip& clip) { clip.setSegment(index, tag, value, offset); };
}
template <class Value>
Fault::Plant entry(std::size_t index, std::uint64_t offset, const Value& value) {
    return [=](GoodClip& clip) { clip.setEntry(0, index, offset, value); };
}
/// Alters an octet of the @p index-th element with @p key.
Fault::Plant element(const KLVKey& key, std::size_t index, std::uint64_t offset, std::uint8_t value);
/// Alters an octet of the value of a system metadata pack.
Fault::Plant system(std::size_t index, std::uint64_t offset, std::uint8_t value);
KLVKey other(KLVKey key, std::size_t octet, std::uint8_t value);
