#include "util/fresh_uuid.h"

#include <algorithm>
#include <array>
#include <cstddef>

#if defined(BRYX_FIXED_UUIDS)
#    include <atomic>
#elif defined(_WIN32)
#    include <rpc.h>
#else
#    include <pthread.h>
#    include <unistd.h>
#endif

#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace bryx::util {

#if defined(BRYX_FIXED_UUIDS)

uuid freshUUID() {
    static std::atomic<std::uint64_t> count{0};
    uuid result;
    // Version 4 and the variant of RFC 4122, then a number in place of randomness.
    storeBigEndian(&result.octets[0], 0x4000, 8);
    storeBigEndian(&result.octets[8], std::uint64_t{0x80} << 56U | ++count, 8);
    return result;
}

#elif defined(_WIN32)

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

namespace {

/// Random octets of one thread, which are asked for some at a time: a call of the system for each UUID would be the
/// most of what making a small set costs.
struct Pool {
    std::array<uuid, 16> random;
    std::size_t left = 0;
};

thread_local Pool pool;

/// In a forked process, the one thread there is must not hand out what that of the parent does.
void dropPool() {
    pool.left = 0;
}

} // namespace

uuid freshUUID() {
    static const int registered = pthread_atfork(nullptr, nullptr, dropPool);
    require(registered == 0, "UuidCreate succeeded");
    if (pool.left == 0) {
        require(getentropy(pool.random.data(), sizeof pool.random) == 0, "UuidCreate succeeded");
        pool.left = pool.random.size();
    }
    uuid result = pool.random[--pool.left];
    // Version 4, and the variant of RFC 4122.
    result.octets[6] = static_cast<std::uint8_t>((result.octets[6] & 0x0FU) | 0x40U);
    result.octets[8] = static_cast<std::uint8_t>((result.octets[8] & 0x3FU) | 0x80U);
    return result;
}

#endif

} // namespace bryx::util
