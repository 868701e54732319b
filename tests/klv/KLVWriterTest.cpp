#include <sstream>

#include <gtest/gtest.h>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/GenericKLVWriter.h"
#include "klv/GroupValidatorFilter.h"
#include "klv/KLVFillItemKeyFilter.h"
#include "klv/KLVMonitor.h"
#include "klv/KLVStreamPadder.h"
#include "klv/VerifyingKLVHandler.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Octets.h"
#include "support/Recorders.h"
#include "support/Streams.h"

namespace {

/// A stream of triplets of all kinds, in all forms.
std::string allKinds() {
    using octets::klv;
    using octets::of;
    KLVKey berSet = keys::localSet;
    berSet[5] = 0x13;
    KLVKey bytePack = keys::variablePack;
    bytePack[5] = 0x24;
    return klv(keys::item, "value") + klv(keys::item, "", 1) + klv(keys::item, "long form", 0x88) +
           klv(keys::universalSet, klv(keys::item, "a") + klv(keys::universalSet, klv(keys::item, "b"))) +
           klv(keys::localSet, of({1, 2, 0, 3, 'x', 'y', 'z', 0xFF, 0xFE, 0, 0})) +
           klv(berSet, of({1, 2}) + octets::length(3, 0x81) + "abc", 0x81) + klv(keys::variablePack, of({0, 1, 'p'})) +
           klv(bytePack, of({2, 'p', 'q'})) + klv(keys::fixedPack, "pack") + klv(keys::wrapper, "wrapped") +
           octets::key(keys::label) + klv(klvutil::fillKey, std::string(9, '\0'));
}

void send(const std::string& stream, KLVHandler& handler) {
    std::istringstream input(stream);
    GenericKLVReader reader;
    reader.setHandler(&handler);
    reader.parse(input, 0);
}

/// A writer behind a monitor, whose locator is told, as fillers need it.
class MonitoredWriter {
public:
    explicit MonitoredWriter(std::ostream& stream) : writer_(stream) {
        monitor.setHandler(&writer_);
        monitor.startStream(true);
        monitor.berLengthForm(0x83);
    }
    KLVMonitor monitor{KLVMonitor::UnknownLengths::Counted};

    void item(std::uint64_t octets) {
        monitor.startIndividualItem(keys::item, octets);
        monitor.value(std::vector<std::uint8_t>(octets).data(), octets);
        monitor.endIndividualItem(keys::item);
    }

private:
    GenericKLVWriter writer_;
};

} // namespace

TEST(KLVWriter, WritesWhatWasRead) {
    const std::string stream = allKinds();
    std::ostringstream output;
    GenericKLVWriter writer(output);
    GroupValidatorFilter groups; // has no objection
    groups.setHandler(&writer);
    send(stream, groups);
    EXPECT_EQ(output.str(), stream);

    std::ostringstream versioned;
    GenericKLVWriter versionedWriter(versioned);
    KLVFillItemKeyFilter fill;
    fill.setHandler(&versionedWriter);
    fill.setKeyVersion(2);
    send(stream, fill);
    std::string expected = stream;
    expected[stream.size() - 9 - 4 - 16 + 7] = 2;
    EXPECT_EQ(versioned.str(), expected);
}

TEST(KLVWriter, PatchesUnknownLengths) {
    std::ostringstream output;
    MonitoredWriter writer(output);
    writer.item(1);
    writer.monitor.berLengthForm(0x87);
    writer.monitor.startIndividualItem(keys::item, klvutil::unknownLength);
    const std::uint8_t octets[] = {'a', 'b', 'c'};
    writer.monitor.value(octets, 3);
    writer.monitor.value(octets, 2);
    writer.monitor.endIndividualItem(keys::item);
    EXPECT_EQ(std::streamoff{writer.monitor.getLocator().streampos()}, 21 + 24 + 5);
    writer.item(1);
    EXPECT_EQ(output.str(), octets::klv(keys::item, std::string(1, '\0')) + octets::klv(keys::item, "abcab", 0x87) +
                                octets::klv(keys::item, std::string(1, '\0'), 0x87));

    KLVMonitor readersMonitor;
    struct Wanting : DullKLVHandler {
        bool startIndividualItem(const KLVKey&, std::uint64_t) override { return true; }
    } wanting;
    readersMonitor.setHandler(&wanting);
    readersMonitor.berLengthForm(1);
    EXPECT_EQ(failure([&] { readersMonitor.startIndividualItem(keys::item, klvutil::unknownLength); }),
              "wants value for unknown length");
}

TEST(KLVWriter, RefusesMisuse) {
    std::ostringstream output;
    GenericKLVWriter writer(output);
    EXPECT_EQ(failure([&] { writer.startLabel(keys::label); }), "has started");
    EXPECT_EQ(failure([&] { writer.value(nullptr, 0); }), "has started");
    EXPECT_EQ(failure([&] { writer.startStream(false); }), "unbuffered output is possible");
    writer.startStream(true);
    EXPECT_EQ(failure([&] { writer.startStream(true); }), "has not started");
    EXPECT_EQ(failure([&] { writer.berLengthForm(0x80); }), "valid form");
    writer.berLengthForm(1);
    EXPECT_EQ(failure([&] { writer.startIndividualItem(keys::item, 128); }), "enough octets");
    writer.startLocalSet(keys::localSet, 9, KLVFieldForm::OneOctet, KLVFieldForm::TwoOctets);
    EXPECT_EQ(failure([&] { writer.startLocalItem(256, 1); }), "correct local item type and length");
    EXPECT_EQ(failure([&] { writer.startLocalItem(1, 65536); }), "correct local item type and length");
    EXPECT_EQ(failure([&] { writer.value(nullptr, std::uint64_t{1} << 63U); }), "valid streamsize");

    // Of what is not counted as it passes, a length that is not known cannot be written, whatever field could hold it.
    const std::uint64_t unknown = klvutil::unknownLength;
    constexpr auto ber = KLVFieldForm::BER;
    writer.berLengthForm(0x88);
    output.str({});
    EXPECT_EQ(failure([&] { writer.startUniversalSet(keys::universalSet, unknown); }), "unbuffered output is possible");
    EXPECT_EQ(failure([&] { writer.startLocalSet(keys::localSet, unknown, KLVFieldForm::TwoOctets, ber); }),
              "unbuffered output is possible");
    EXPECT_EQ(failure([&] { writer.startFixedLengthPack(keys::fixedPack, unknown); }), "unbuffered output is possible");
    EXPECT_EQ(failure([&] { writer.startVariableLengthPack(keys::variablePack, unknown, ber); }),
              "unbuffered output is possible");
    EXPECT_EQ(failure([&] { writer.startWrapper(keys::wrapper, unknown, KLVWrapperKind::Simple); }),
              "unbuffered output is possible");
    EXPECT_EQ(output.str(), "");
    writer.startLocalSet(keys::localSet, 9, KLVFieldForm::TwoOctets, ber);
    EXPECT_EQ(failure([&] { writer.startLocalItem(1, unknown); }), "unbuffered output is possible");
    writer.startVariableLengthPack(keys::variablePack, 9, ber);
    EXPECT_EQ(failure([&] { writer.startVariableLengthPackItem(unknown); }), "unbuffered output is possible");

    // Tags and lengths of fixed width have their own field, which comes after the conditions of the writer.
    writer.startLocalSet(keys::localSet, 9, KLVFieldForm::FourOctets, KLVFieldForm::FourOctets);
    EXPECT_EQ(failure([&] { writer.startLocalItem(1, std::uint64_t{1} << 32U); }),
              "correct local item type and length");
    EXPECT_EQ(failure([&] { writer.startLocalItem(1, 0); }), "enough octets");
    output.str({});
    writer.startLocalItem(0, 0);
    EXPECT_EQ(output.str(), std::string(8, '\0'));

    // A stream that cannot seek cannot be patched.
    struct NoSeeking : std::stringbuf {
        std::stringbuf::pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override {
            return off_type(-1);
        }
    } buffer;
    std::ostream pipe(&buffer);
    GenericKLVWriter piped(pipe);
    piped.startStream(true);
    EXPECT_EQ(failure([&] { piped.startIndividualItem(keys::item, klvutil::unknownLength); }),
              "unbuffered output is possible");
}

TEST(KLVWriter, HidesNoFailureOfTheStream) {
    const std::string stream = allKinds();
    for (std::size_t room = 0; room < stream.size(); ++room) {
        FullStream full(room);
        GenericKLVWriter writer(full);
        EXPECT_EQ(failure([&] { send(stream, writer); }), "successful write()") << room;
        const std::string written = full.octets();
        EXPECT_EQ(written, stream.substr(0, written.size()));
        EXPECT_EQ(failure([&] { writer.startLabel(keys::label); }), "successful write()");
        EXPECT_EQ(full.octets(), written);
    }
}

TEST(KLVFiller, FillsToLengthOrGrid) {
    struct Case {
        std::uint64_t written, alignment, fill;
    };
    for (const Case& c : {Case{500, 512, 524}, Case{492, 512, 20}, Case{512, 512, 0}, Case{493, 512, 531},
                          Case{100, 1, 0}, Case{100, 0, 0}, Case{30, 16, 34}, Case{0, 512, 0}}) {
        EXPECT_EQ(klvutil::fillSize(c.written, c.alignment, 0x83), c.fill) << c.written;
    }
    std::ostringstream output;
    MonitoredWriter writer(output);
    writer.item(7); // in front of the partition
    KLVGrid grid{27};
    KLVFiller filler(grid);
    filler.setHandler(&writer.monitor);
    EXPECT_EQ(failure([&] { filler.getLocator(); }), "locator is present");
    filler.setLocator(writer.monitor.getLocator());
    const auto position = [&] { return std::streamoff{filler.getLocator().streampos()}; };
    const auto filled = [&](std::uint64_t octets) {
        filler.startFilledItem();
        writer.item(octets);
        filler.endFilledItem();
        return position();
    };
    filler.setPadding(KLVFiller::Mode::Alignment, 512, 0);
    EXPECT_EQ(filled(480), 27 + 1024);
    EXPECT_EQ(filled(492), 27 + 1536);
    filler.setExtraSize(20);
    EXPECT_EQ(filled(492), 27 + 2048 + 512 - 20);
    filler.setExtraSize(0);
    filler.setPadding(KLVFiller::Mode::Alignment, 16384, 0);
    EXPECT_EQ(filled(0), 27 + 16384);
    filler.setPadding(KLVFiller::Mode::FixedLength, 100, 200);
    EXPECT_EQ(filled(180), 27 + 16384 + 200);
    EXPECT_EQ(filled(160), 27 + 16384 + 400);
    EXPECT_EQ(failure([&] { filled(161); }), "achievable padded length");
    EXPECT_EQ(failure([&] { filler.startFilledItem(); }), "not in filled item");
    KLVFiller other(grid);
    EXPECT_EQ(failure([&] { other.endFilledItem(); }), "in filled item");
    EXPECT_EQ(failure([&] { other.setPadding(KLVFiller::Mode::FixedLength, 512, 513); }),
              "padded length is multiple of alignment");
    EXPECT_EQ(other.getMode(), KLVFiller::Mode::Alignment);

    // The zeros come in pieces; lengths beyond the usual form get a longer one, and the sender's form is told again.
    Log log;
    EventRecorder recorder(log);
    KLVMonitor monitor;
    monitor.setHandler(&recorder);
    KLVFiller long_(grid);
    long_.setHandler(&monitor);
    long_.setLocator(monitor.getLocator());
    long_.berLengthForm(0x84);
    long_.setFillLengthForm(0x81);
    long_.setPadding(KLVFiller::Mode::FixedLength, 0, 10024);
    log.clear();
    long_.startFilledItem();
    long_.endFilledItem();
    EXPECT_LOG(log, "form 135 @0; item 01000000 10000 @0; value 4096 @0; value 4096 @0; value 1808 @0; "
                    "/item 01000000 @0; form 132 @10024");
}

TEST(KLVFiller, PadsRegions) {
    std::ostringstream output;
    MonitoredWriter writer(output);
    const KLVGrid grid;
    KLVStreamPadder padder(grid);
    padder.setHandler(&writer.monitor);
    padder.setLocator(writer.monitor.getLocator());
    padder.setPadding(KLVFiller::Mode::FixedLength, 512, 1024);
    padder.announce(1024);
    EXPECT_FALSE(padder.isComplete());
    padder.startStream(true);
    writer.item(10);
    padder.endStream(false);
    EXPECT_TRUE(padder.isComplete());
    EXPECT_EQ(output.str().size(), 1024U);
    padder.announce(0);
    EXPECT_TRUE(padder.isComplete());
    padder.setPadding(KLVFiller::Mode::Alignment, 512, 0);
    padder.startStream(true);
    writer.item(10);
    EXPECT_EQ(failure([&] { padder.endStream(false); }), "region is as long as announced");
}

TEST(GroupValidator, HoldsSendersToTheirLengths) {
    const auto told = [](const std::function<void(KLVHandler&)>& sender) {
        std::ostringstream output;
        GenericKLVWriter writer(output);
        GroupValidatorFilter groups;
        groups.setHandler(&writer);
        groups.startStream(true);
        groups.berLengthForm(0x83);
        return failure([&] { sender(groups); });
    };
    const std::uint8_t octets[8] = {};
    const auto set = [](KLVHandler& h, std::uint64_t length) {
        h.startLocalSet(keys::localSet, length, KLVFieldForm::TwoOctets, KLVFieldForm::TwoOctets);
    };
    EXPECT_EQ(told([&](KLVHandler& h) { h.startLocalItem(1, 1); }), "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { h.startVariableLengthPackItem(1); }), "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 5), h.startLocalItem(1, 2); }), "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 5), h.startLocalItem(1, 65536); }), "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 5), h.startIndividualItem(keys::item, 0); }), "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 5), h.endLocalSet(keys::localSet); }), "complete group");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 5), h.startLocalItem(1, 1), h.endLocalItem(1); }), "complete value");
    EXPECT_EQ(told([&](KLVHandler& h) { set(h, 4), h.startLocalItem(1, 0), h.endLocalItem(2); }),
              "matching end of KLV triplet");
    EXPECT_EQ(told([&](KLVHandler& h) { h.startIndividualItem(keys::item, 7), h.value(octets, 8); }),
              "valid group item");
    EXPECT_EQ(told([&](KLVHandler& h) { h.startIndividualItem(keys::item, 0), h.endIndividualItem(keys::picture); }),
              "matching end of KLV triplet");
    EXPECT_EQ(told([&](KLVHandler& h) { h.endLabel(keys::label); }), "matching end of KLV triplet");
    EXPECT_EQ(told([&](KLVHandler& h) { h.value(octets, 1); }), "valid group item");
    EXPECT_EQ(
        told([&](KLVHandler& h) { h.startUniversalSet(keys::universalSet, 20), h.startIndividualItem(keys::item, 1); }),
        "valid group item");
}

TEST(VerifyingKLVHandler, ReadsBackWhatIsWritten) {
    const std::string stream = allKinds();
    std::stringstream file("run-in", std::ios::in | std::ios::out | std::ios::ate | std::ios::binary);
    GenericKLVWriter writer(file);
    VerifyingKLVHandler verifying(file, &writer);
    send(stream, verifying);
    EXPECT_EQ(file.str(), "run-in" + stream);

    std::stringstream patched;
    GenericKLVWriter patching(patched);
    VerifyingKLVHandler verifyingPatches(patched, &patching);
    verifyingPatches.startStream(true);
    verifyingPatches.berLengthForm(0x84);
    verifyingPatches.startIndividualItem(keys::item, klvutil::unknownLength);
    verifyingPatches.value(reinterpret_cast<const std::uint8_t*>("abc"), 3);
    verifyingPatches.endIndividualItem(keys::item);
    verifyingPatches.endStream(false);
    EXPECT_EQ(patched.str(), octets::klv(keys::item, "abc", 0x84));

    // A sender need not tell a form: the writer's own is in force, until another one is told.
    std::stringstream untold;
    GenericKLVWriter untoldWriter(untold);
    VerifyingKLVHandler verifyingUntold(untold, &untoldWriter);
    verifyingUntold.startStream(true);
    const std::uint8_t octet = 'x';
    for (const std::uint8_t form : {std::uint8_t{0}, std::uint8_t{0x84}}) {
        if (form != 0) {
            verifyingUntold.berLengthForm(form);
        }
        verifyingUntold.startFixedLengthPack(keys::fixedPack, 1);
        verifyingUntold.value(&octet, 1);
        verifyingUntold.endFixedLengthPack(keys::fixedPack);
    }
    EXPECT_EQ(untold.str(), octets::klv(keys::fixedPack, "x") + octets::klv(keys::fixedPack, "x", 0x84));

    // A device that changes an octet, whichever it is, is found out; octet 7 of a key may be any.
    for (std::size_t place = 0; place < stream.size(); ++place) {
        std::stringbuf buffer;
        struct Lying : std::stringbuf {
            std::size_t place = 0;
            std::size_t count = 0;
            std::streamsize xsputn(const char* data, std::streamsize size) override {
                std::string octets(data, static_cast<std::size_t>(size));
                if (place >= count && place < count + octets.size()) {
                    octets[place - count] = static_cast<char>(octets[place - count] ^ 0x55);
                }
                count += octets.size();
                return std::stringbuf::xsputn(octets.data(), size);
            }
        } lying;
        lying.place = place;
        std::iostream device(&lying);
        GenericKLVWriter lied(device);
        VerifyingKLVHandler doubting(device, &lied);
        EXPECT_THROW(send(stream, doubting), VerifyingKLVHandler::exception) << place;
    }
}
