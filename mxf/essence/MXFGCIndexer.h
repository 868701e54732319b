#pragma once

#include <cstdint>
#include <vector>

#include "klv/Locator.h"
#include "mxf/essence/MXFGCStructureFilter.h"
#include "util/Api.h"

namespace bryx {

/// Notes where the elements of each content package are written, for an index table.
class BRYX_API MXFGCIndexer : public MXFGCStructureFilter {
public:
    using Offsets = std::vector<std::uint32_t>;

    /// @param next not owned
    /// @param locator tells where in the stream the next octet goes; outlives the indexer
    MXFGCIndexer(MXFGCStructureHandler& next, const Locator& locator) : MXFGCStructureFilter(next), locator_(locator) {}
    ~MXFGCIndexer() override;

    void startContentPackage() override;
    /// Requires "element offset fits index entry", which has 32 bits.
    void startElement(const KLVKey& key) override;
    void endContentPackage() override;

protected:
    /// Called when a content package has been written.
    ///
    /// @param start position of its first element
    /// @param offsets of all further elements, from there
    /// Here it does nothing.
    virtual void indexContentPackage(std::uint64_t start, const Offsets& offsets);

    /// Where the next octet goes.
    std::uint64_t position() const { return static_cast<std::uint64_t>(std::streamoff{locator_.streampos()}); }

private:
    const Locator& locator_;
    std::uint64_t start_ = 0;
    Offsets offsets_;
    bool isFirst_ = true;
};

} // namespace bryx
