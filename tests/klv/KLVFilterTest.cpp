#include "klv/KLVFilter.h"

#include <gtest/gtest.h>

#include "klv/KLVFillItemKeyFilter.h"
#include "klv/KLVMonitor.h"
#include "support/ExpectLog.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

class Actions : public ActionKLVFilter {
public:
    explicit Actions(Log& log) : log_(log) {}

private:
    void before() override { log_.emplace_back("before"); }
    void after() override { log_.emplace_back("after"); }

    Log& log_;
};

} // namespace

TEST(KLVFilter, ActionsWrapEventsButNotTheLocator) {
    Log log;
    EventRecorder recorder(log);
    Actions filter(log);
    EXPECT_THROW(filter.getHandler(), util::assertion_failure);
    EXPECT_THROW(filter.endStream(false), util::assertion_failure);
    log.clear();
    filter.setHandler(&recorder);
    KLVMonitor monitor;
    filter.setLocator(monitor.getLocator());
    EXPECT_TRUE(log.empty());
    filter.startStream(true);
    recorder.wants = true;
    EXPECT_TRUE(filter.startIndividualItem(keys::item, 5));
    EXPECT_LOG(log, (Log{"before", "startStream 1 @0", "after", "before", "item 00000001 5 @0", "after"}));
}

TEST(KLVFilter, FillKeysPassOrTakeAVersion) {
    struct KeyKeeper : DullKLVFilter {
        KLVKey key;
        bool startIndividualItem(const KLVKey& k, std::uint64_t) override {
            key = k;
            return false;
        }
    } keeper;
    KLVFillItemKeyFilter filter;
    filter.setHandler(&keeper);
    const auto passed = [&](KLVKey key, std::uint8_t version) {
        key[7] = version;
        filter.startIndividualItem(key, 0);
        return int{keeper.key[7]};
    };
    EXPECT_EQ(passed(klvutil::fillKey, 9), 9);
    filter.setKeyVersion(2);
    EXPECT_EQ(passed(klvutil::fillKey, 1), 2);
    EXPECT_EQ(passed(keys::item, 1), 1);
    EXPECT_THROW(filter.setKeyVersion(3), util::assertion_failure);
}

TEST(KLVMonitor, CountsFromItsBase) {
    Log log;
    EventRecorder recorder(log);
    KLVMonitor monitor;
    monitor.setHandler(&recorder);
    monitor.rebase(100);
    monitor.setLocator(monitor.getLocator());
    EXPECT_THROW(monitor.startStream(false), util::assertion_failure);
    EXPECT_THROW(monitor.endWrapper(keys::wrapper), util::assertion_failure);
    monitor.startStream(true);
    monitor.berLengthForm(0x87);
    recorder.wants = false;
    monitor.startIndividualItem(keys::item, 50);
    monitor.endIndividualItem(keys::item);
    EXPECT_EQ(monitor.getLocator().streampos(), 174);
    // A value of unknown length may pass only if nobody wants it.
    EXPECT_FALSE(monitor.startIndividualItem(keys::item, klvutil::unknownLength));
    monitor.endIndividualItem(keys::item);
    recorder.wants = true;
    EXPECT_THROW(monitor.startIndividualItem(keys::item, klvutil::unknownLength), util::assertion_failure);
    // What an aborted stream has left open does not show in the next.
    monitor.startStream(true);
    EXPECT_THROW(monitor.endIndividualItem(keys::item), util::assertion_failure);
    EXPECT_EQ(monitor.getLocator().streampos(), 222);
    monitor.rebase(0);
    EXPECT_EQ(monitor.getLocator().streampos(), 0);
    EXPECT_THROW(KLVMonitor().startIndividualItem(keys::item, 1), util::assertion_failure); // "has BER length form"
}
