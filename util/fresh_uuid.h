#pragma once

#include "util/Api.h"
#include "util/uuid.h"

namespace bryx::util {

/// A fresh random UUID (RFC 4122 version 4), in RFC 4122 octet order. Requires "UuidCreate succeeded": that the
/// platform has randomness to give.
BRYX_API uuid freshUUID();

} // namespace bryx::util
