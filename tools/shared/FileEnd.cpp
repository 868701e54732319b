#include "shared/FileEnd.h"

#include "klv/KLVFindings.h"
#include "mxf/essence/MXFGCKeys.h"
#include "mxf/index/MXFIndexTableSegment.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "mxf/structure/MXFPrimer.h"
#include "mxf/structure/MXFRandomIndex.h"

namespace {

/// Structural and descriptive metadata (ST 377-1).
bool isMetadataSet(const KLVKey& key) {
    return key[4] == 2 && key[5] == 0x53 && key[8] == 0x0D && key[9] == 1 && (key[10] == 1 || key[10] == 4);
}

/// What a triplet is; null if its key does not say.
const char* nameOf(const KLVKey& key) {
    switch (mxfutil::gcEssenceKind(key)) {
    case MXFGCEssenceKind::Picture:
        return "a picture element";
    case MXFGCEssenceKind::Sound:
        return "a sound element";
    case MXFGCEssenceKind::Data:
        return "a data element";
    case MXFGCEssenceKind::Compound:
        return "a compound element";
    case MXFGCEssenceKind::None:
        break;
    }
    return mxfutil::isGCSystemElement(key)                       ? "a system element"
           : mxfutil::isPartitionPackKey(key)                    ? "a partition pack"
           : key == mxfutil::randomIndexPackKey                  ? "the random index pack"
           : mxfutil::isIndexTableSegmentKey(key)                ? "an index table segment"
           : key == mxfutil::primerPackKey || isMetadataSet(key) ? "header metadata"
           : key == klvutil::fillKey                             ? "fill"
                                                                 : nullptr;
}

std::optional<KLVKey> keyAt(std::istream& file, std::streampos position) {
    KLVKey key;
    file.clear();
    file.seekg(position);
    file.read(reinterpret_cast<char*>(key.octets.data()), static_cast<std::streamsize>(key.octets.size()));
    const bool isWhole = static_cast<bool>(file);
    file.clear();
    return isWhole ? std::optional<KLVKey>(key) : std::nullopt;
}

} // namespace

std::string describeEnd(const klvutil::parse_error& failure, std::istream& file, const std::optional<KLVKey>& element,
                        std::uint64_t packages) {
    if (failure.id() != klvutil::findings::unsuccessfulRead.id) {
        return failure.what();
    }
    if (file.bad()) {
        return "the file cannot be read from octet " + std::to_string(std::streamoff{failure.position()}) + " on";
    }
    const char* name = element ? "an element" : "a KLV triplet";
    if (const auto key = element ? element : keyAt(file, failure.position())) {
        name = nameOf(*key) != nullptr ? nameOf(*key) : name;
    }
    return std::string("the file ends within ") + name + "; " + (packages == 0 ? "no" : std::to_string(packages)) +
           " whole content package" + (packages == 1 ? "" : "s") + " before it";
}
