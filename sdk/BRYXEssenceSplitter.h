#pragma once

#include "mxf/essence/MXFGCSplitter.h"
#include "util/Api.h"

namespace bryx {

/// Decides which keys are those of essence elements.
class BRYX_API BRYXGCEssenceKeyClassifier {
public:
    virtual ~BRYXGCEssenceKeyClassifier();

    /// What the element with @p key holds; None if it is no essence element. mxfutil::gcEssenceKind() says what the
    /// standard has (ST 379-1). May be asked once for a key that comes again: what it says holds for the stream.
    virtual MXFGCEssenceKind classify(const KLVKey& key) const = 0;
};

/// A splitter that asks a classifier which keys are those of essence elements, if it has one. Picture with sound or data
/// and no system item, as many writers make it, passes.
class BRYX_API BRYXEssenceSplitter : public MXFGCSplitter {
public:
    using MXFGCSplitter::MXFGCSplitter;
    ~BRYXEssenceSplitter() override;

    /// Not owned; null for what the standard has.
    void setEssenceKeyClassifier(const BRYXGCEssenceKeyClassifier* classifier) { classifier_ = classifier; }

protected:
    bool isEssenceElement(const KLVKey& key) const override;
    bool isPictureElement(const KLVKey& key) const override;
    bool isSoundElement(const KLVKey& key) const override;
    bool isDataElement(const KLVKey& key) const override;
    bool isCompoundElement(const KLVKey& key) const override;
    bool allowsSecondKind() const override;

private:
    MXFGCEssenceKind classify(const KLVKey& key) const;

    const BRYXGCEssenceKeyClassifier* classifier_ = nullptr;
};

} // namespace bryx
