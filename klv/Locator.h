#pragma once

#include <ios>

#include "util/Api.h"

namespace bryx {

/// Tells where in its stream an engine is.
class BRYX_API Locator {
public:
    virtual ~Locator();

    /// From the start event of a KLV triplet through its end event, the position of the first octet of the innermost
    /// triplet's key; between triplets, that of the octet that comes next. The items of local sets and of
    /// variable-length packs have no key of their own: in them the position is that of the set or pack.
    ///
    /// Positions are those of the stream, in octets. On a stream that cannot tell its position they count from the
    /// start position that reading was given, which is 0 for a whole file. The reference stays valid, and its value
    /// changes, as reading goes on.
    virtual const std::streampos& streampos() const = 0;
};

} // namespace bryx
