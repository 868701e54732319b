#pragma once

#include "klv/KLVValueTypes.h"
#include "util/Api.h"

namespace bryx {

/// A source of identifiers for new sets: derive from it to make them reproducible.
class BRYX_API MXFUIDGenerator {
public:
    virtual ~MXFUIDGenerator();

    /// An identifier that has not been handed out before.
    virtual MXFUID generateUID() = 0;
};

namespace mxfutil {

/// A UMID of a material number that @p generator makes, of no particular kind of material (ST 330).
BRYX_API UMID generateUMID(MXFUIDGenerator& generator);

} // namespace mxfutil

/// Hands out fresh random UUIDs, as new sets have them. Requires "UuidCreate succeeded".
class BRYX_API BRYXDefaultUIDGenerator : public MXFUIDGenerator {
public:
    ~BRYXDefaultUIDGenerator() override;
    MXFUID generateUID() override;
};

} // namespace bryx
