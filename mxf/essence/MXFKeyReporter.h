#pragma once

#include <set>

#include "klv/Finding.h"
#include "klv/KLVKey.h"
#include "util/Api.h"

class ErrorHandler;

/// Reports findings about keys: once for each key, since what is wrong with one element of an essence container is as a
/// rule wrong with all of its kind. After a thousand keys, further ones are not reported.
class BRYX_API MXFKeyReporter {
public:
    void report(ErrorHandler* errorHandler, const klvutil::Finding& finding, const KLVKey& key);

    /// Forgets what was reported.
    void clear() { reported_.clear(); }

private:
    std::set<KLVKey> reported_;
};
