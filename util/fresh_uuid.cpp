#include "util/fresh_uuid.h"

#include <algorithm>

#if defined(_WIN32)
#    include <rpc.h>
#else
#    include <boost/uuid/random_generator.hpp>
#endif

#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace util {

#if defined(_WIN32)

uuid freshUUID() {
    UUID made;
    const RPC_STATUS status = UuidCreate(&made);
    require(status == RPC_S_OK || status == RPC_S_UUID_LOCAL_ONLY, "UuidCreate succeeded");
    uuid result;
    storeBigEndian(&result.octets[0], made.Data1, 4);
    storeBigEndian(&result.octets[4], made.Data2, 2);
    storeBigEndian(&result.octets[6], made.Data3, 2);
    std::copy_n(made.Data4, 8, &result.octets[8]);
    return result;
}

#else

uuid freshUUID() {
    uuid result;
    try {
        // The platform is asked each time: a generator of our own would give two forked processes the same values.
        const boost::uuids::uuid made = boost::uuids::random_generator_pure()();
        std::copy(made.begin(), made.end(), result.octets.begin());
    } catch (const boost::uuids::entropy_error&) {
        failAssertion("UuidCreate succeeded");
    }
    return result;
}

#endif

} // namespace util
