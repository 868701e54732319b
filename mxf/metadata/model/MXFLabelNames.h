#pragma once

#include "klv/KLVKey.h"
#include "util/Api.h"

namespace bryx::mxfutil {

/// The name that the register of labels (ST 400) has for @p label, of whatever version, or null if it is not known
/// here. Left out are labels of custom wrappings and the variants for single streams of a multiplex, except the first.
BRYX_API const char* labelName(const KLVKey& label) noexcept;

} // namespace bryx::mxfutil
