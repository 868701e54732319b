#include <gtest/gtest.h>

#include "klv/DullErrorHandler.h"
#include "klv/InputLocator.h"
#include "sdk/BRYXSystemParser.h"
#include "sdk/BRYXVersion.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "validation/BRYXOverridableLocator.h"

TEST(BRYXOverridableLocator, TellsPositionsDuringAndAfterReading) {
    const auto locator = std::make_shared<BRYXOverridableLocator>();
    const auto told = [&] { return std::streamoff{locator->streampos()}; };
    EXPECT_EQ(failure([&] { told(); }), "has locator");
    EXPECT_EQ(failure([&] { locator->endStream(); }), "has locator");

    struct Asker : DullErrorHandler {
        const Locator* locator = nullptr;
        std::vector<std::streamoff> positions;
        void setLocator(const Locator& l) override { locator = &l; }
        void error(const util::uuid&, const std::string&) override { positions.push_back(locator->streampos()); }
    };
    const auto asker = std::make_shared<Asker>();
    BRYXOverridableLocator::ErrorHandler handler(asker, locator);
    std::streampos outer = 10;
    std::streampos inner = 20;
    const InputLocator outerLocator(outer);
    const InputLocator innerLocator(inner);
    handler.setLocator(outerLocator);
    handler.startStream();
    EXPECT_EQ(asker->locator, locator.get());
    handler.setLocator(innerLocator);
    handler.startStream();
    handler.error({}, "inner");
    locator->overrideLocator(5);
    handler.error({}, "something read before");
    locator->restoreLocator();
    handler.endStream();
    outer = 11;
    handler.error({}, "outer");
    handler.endStream();
    handler.error({}, "when all is over");
    EXPECT_EQ(asker->positions, (std::vector<std::streamoff>{20, 5, 11, 11}));
    EXPECT_EQ(failure([&] { BRYXOverridableLocator::ErrorHandler(nullptr, locator); }), "error handler is present");
}

TEST(BRYXOverridableLocator, ForgetsAStreamThatCannotStart) {
    struct Full : BRYXOverridableLocator {
        bool isFull = true;
        void startStream() override {
            if (isFull) {
                throw std::bad_alloc();
            }
            BRYXOverridableLocator::startStream();
        }
    };
    struct Counter : DullErrorHandler {
        int open = 0;
        bool refuses = false;
        void setLocator(const Locator&) override {
            if (refuses) {
                throw std::runtime_error("no");
            }
        }
        void startStream() override { ++open; }
        void endStream() override { --open; }
    };
    const auto locator = std::make_shared<Full>();
    const auto counter = std::make_shared<Counter>();
    BRYXOverridableLocator::ErrorHandler handler(counter, locator);
    std::streampos position = 10;
    const InputLocator inner(position);
    handler.setLocator(inner);
    EXPECT_THROW(handler.startStream(), std::bad_alloc);
    EXPECT_EQ(counter->open, 0);
    locator->isFull = false;
    counter->refuses = true;
    EXPECT_THROW(handler.setLocator(inner), std::runtime_error);
    position = 20; // which nobody asks for any more
    EXPECT_EQ(std::streamoff{locator->streampos()}, 10);
}

TEST(BRYXSystemParser, TellsTheSchemesApart) {
    struct Receiver : MXFPDProxySystemHandler {
        int proxies = 0;
        void pdProxyMetadata(const MXFPDProxyMetadata&, const MXFGCItems&) override { ++proxies; }
    } receiver;
    BRYXSystemParser parser;
    EXPECT_FALSE(parser.wantsSystemElement(mxfutil::pdProxySetKey));
    EXPECT_FALSE(parser.wantsSystemElement(mxfutil::sdtiCPSystemMetadataKey));
    parser.setPDProxySystemHandler(&receiver);
    EXPECT_TRUE(parser.wantsSystemElement(mxfutil::pdProxySetKey));
    EXPECT_FALSE(parser.wantsSystemElement(mxfutil::sdtiCPSystemMetadataKey));
    parser.localSet(mxfutil::pdProxySetKey, {});
    EXPECT_EQ(receiver.proxies, 1);
}

TEST(BRYXVersion, IsWhatFilesSayOfTheirWriter) {
    EXPECT_EQ(getBRYXToolkitVersion(), (MXFProductVersion{4, 15, 0, 143, MXFProductVersion::Release::Released}));
    EXPECT_EQ(getBRYXPlatform(), L"Bryxsuite (Win32)");
}
