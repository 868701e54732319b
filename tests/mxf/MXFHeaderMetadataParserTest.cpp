#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"

#include <sstream>

#include <gtest/gtest.h>

#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "support/ExpectLog.h"
#include "support/Octets.h"
#include "support/Recorders.h"

namespace {

class MetadataRecorder : public MXFMetadataHandler {
public:
    explicit MetadataRecorder(Log& log) : log_(log) {}

    void startMetadata() override { log_.emplace_back("start"); }
    void endMetadata() override { log_.emplace_back("end"); }
    void primer(const Primer& primer) override { log_.push_back(line(nullptr, "primer", primer.size())); }
    bool handlesSet(const KLVKey& key) override { return key[15] == 0; }
    void primedSet(MXFPrimedSet& set) override {
        log_.push_back(line(nullptr, "set", set.position, set.length, set.properties.size()));
    }

private:
    Log& log_;
};

std::string primerPack(const MXFPrimer& primer) {
    return octets::klv(mxfutil::primerPackKey, octets::of(mxfutil::writePrimerPack(primer)));
}

} // namespace

TEST(MXFHeaderMetadataParser, ReadsEachRegionWithItsPrimer) {
    const std::string set =
        octets::klv(keys::localSet, octets::of({0x80, 0, 0, 1, 'a', 0x3B, 2, 0, 1, 'b', 0x80, 1, 0, 1, 'c'}));
    const std::string unwanted = octets::klv(keys::make(2, 0x53, 1), "");
    const std::string fill = octets::klv(klvutil::fillKey, "..");
    FileBuilder file;
    file.partition(MXFPartitionKind::Header,
                   primerPack({{0x8000, keys::item}, {0x8001, keys::op1a}}) + set + fill + unwanted);
    file.partition(MXFPartitionKind::Body, primerPack({{0x8000, keys::op1a}}) + set);
    file.partition(MXFPartitionKind::Body,
                   set + octets::klv(mxfutil::primerPackKey, std::string(1U << 22U, ' '), 0x84));
    file.partition(MXFPartitionKind::Footer, primerPack({{0x8001, keys::item}})).randomIndexPack();
    std::istringstream stream(file.file);
    Log log;
    MetadataRecorder handler(log);
    FindingRecorder errors(log);
    MXFHeaderMetadataParser parser(handler);
    parser.setErrorHandler(&errors);
    MXFReader reader;
    reader.setErrorHandler(&errors);
    reader.setHeaderMetadataHandler(&parser);
    reader.read(stream);
    const std::string op1a = toString(keys::op1a);
    EXPECT_LOG(log, "start; primer 2; error tag missing in primer - 0x3b02 @188; set 188 35 3; end; start; "
                    "warning inconsistent primer key - 0x8000 " +
                        op1a + " @389; warning inconsistent primer tag - 0x8000 " + op1a +
                        " @389; primer 1; error tag missing in primer - 0x3b02 @435; "
                        "error tag missing in primer - 0x8001 @435; set 435 35 2; end; start; "
                        "error tag missing in primer - 0x8000 @594; error tag missing in primer - 0x3b02 @594; "
                        "error tag missing in primer - 0x8001 @594; set 594 35 1; "
                        "error invalid primer pack - too many octets @629; end; start; primer 1; end");
}
