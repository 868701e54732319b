#include "shared/FileEnd.h"

#include "klv/KLVFindings.h"
#include "mxf/essence/MXFGCKeys.h"

namespace {

const char* nameOf(const KLVKey& element) {
    switch (mxfutil::gcEssenceKind(element)) {
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
    return mxfutil::isGCSystemElement(element) ? "a system element" : "an element";
}

} // namespace

std::string describeEnd(const klvutil::parse_error& failure, const std::optional<KLVKey>& element,
                        std::uint64_t packages) {
    if (failure.id() != klvutil::findings::unsuccessfulRead.id) {
        return failure.what();
    }
    return std::string("the file ends within ") + (element ? nameOf(*element) : "a KLV triplet") + "; " +
           (packages == 0 ? "no" : std::to_string(packages)) + " whole content package" + (packages == 1 ? "" : "s") +
           " before it";
}
