#include "sdk/BRYXEssenceSplitter.h"

namespace bryx {

BRYXGCEssenceKeyClassifier::~BRYXGCEssenceKeyClassifier() = default;
BRYXEssenceSplitter::~BRYXEssenceSplitter() = default;

MXFGCEssenceKind BRYXEssenceSplitter::classify(const KLVKey& key) const {
    return classifier_ != nullptr ? classifier_->classify(key) : mxfutil::gcEssenceKind(key);
}

bool BRYXEssenceSplitter::isEssenceElement(const KLVKey& key) const {
    return classify(key) != MXFGCEssenceKind::None;
}
bool BRYXEssenceSplitter::isPictureElement(const KLVKey& key) const {
    return classify(key) == MXFGCEssenceKind::Picture;
}
bool BRYXEssenceSplitter::isSoundElement(const KLVKey& key) const {
    return classify(key) == MXFGCEssenceKind::Sound;
}
bool BRYXEssenceSplitter::isDataElement(const KLVKey& key) const {
    return classify(key) == MXFGCEssenceKind::Data;
}
bool BRYXEssenceSplitter::isCompoundElement(const KLVKey& key) const {
    return classify(key) == MXFGCEssenceKind::Compound;
}
bool BRYXEssenceSplitter::allowsSecondKind() const {
    return true;
}

} // namespace bryx
