#pragma once

#include "mxf/metadata/structural/GenericPackage.h"

namespace bryx {

/// A package that says how material is played: its tracks lead to those of source packages (ST 377-1).
class BRYX_API MaterialPackage : public GenericPackage {
    BRYX_SET(MaterialPackage, GenericPackage, "060e2b34.02530101.0d010101.01013600");

protected:
    MaterialPackage() = default;
};

using MaterialPackageFactory = MXFSetFactory<MaterialPackage>;

} // namespace bryx
