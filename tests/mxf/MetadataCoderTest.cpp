#include <gtest/gtest.h>

#include "klv/ValueCoding.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/coding/MXFMetadataModelCoder.h"
#include "mxf/metadata/factories/MXFSetFactory.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "support/BuiltModel.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Models.h"

namespace {

using Octets = std::vector<std::uint8_t>;

constexpr KLVKey privateLabel(std::uint8_t number) {
    KLVKey label = klvutil::key("9cef38e7.d80425c1.c3d20000.9cad11e0");
    label[11] = number;
    return label;
}

Octets labels(std::initializer_list<KLVKey> list) {
    Octets octets;
    for (const KLVKey& label : list) {
        octets.insert(octets.end(), label.octets.begin(), label.octets.end());
    }
    return octets;
}

/// A set that an application adds, and that refers to another by a property that the library does not know.
class ApplicationSet : public MetadataObject {
    BRYX_SET(ApplicationSet, MetadataObject, "060e2b34.02530101.0f010101.00000001");

    /// In octets.
    BRYX_REQUIRED(Size, size, std::uint64_t, "060e2b34.01010101.0f010101.00000002");
    BRYX_OPTIONAL(Note, note, std::wstring, 0x8000, "060e2b34.01010101.0f010101.00000003");

protected:
    ApplicationSet() = default;
};

class Tagless : public ApplicationSet {
    BRYX_SET(Tagless, ApplicationSet, "060e2b34.02530101.0f010101.00000004");
    /// Has a tag that no table knows, and no label.
    BRYX_OPTIONAL(Number, number, std::uint32_t, 0x7FF1);
};

class ApplicationFamily : public MXFMetadataModelFactory {
public:
    const std::vector<std::shared_ptr<MXFMetadataFactory>>& getFactories() override { return factories_; }
    bool isReferenceDarkProperty(const KLVKey& setKey, const KLVKey& propertyKey) override {
        return setKey == ApplicationSet::classKey && propertyKey == keys::item;
    }

private:
    std::vector<std::shared_ptr<MXFMetadataFactory>> factories_{std::make_shared<MXFSetFactory<ApplicationSet>>(),
                                                                std::make_shared<BRYXMetadataFactory>()};
};

/// Notes the sets that come by the last octet of their instance UIDs.
class OrderRecorder : public MXFMetadataHandler {
public:
    std::string order;
    Primer tags;
    void startMetadata() override {}
    void endMetadata() override {}
    void primer(const Primer& primer) override { tags = primer; }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override {
        order += static_cast<char>(set.properties.at(*mxfutil::staticLabel(0x3C0A)).back());
        for (const auto& property : set.properties) {
            EXPECT_FALSE(mxfutil::isPrivateLabel(property.first));
        }
    }
};

template <class Set>
std::shared_ptr<Set> named(char name) {
    const auto set = Set::create();
    set->setInstanceUID(uid(static_cast<std::uint8_t>(name)));
    return set;
}

} // namespace

TEST(MetadataCoder, WritesDepthFirstUnlessAnOrderIsGiven) {
    BRYXMetadataFactory factory;
    const auto root = named<Sequence>('r');
    const auto a = named<Sequence>('a');
    const auto b = named<Filler>('b');
    const auto c = named<Filler>('c');
    root->addComponent(a);
    root->addComponent(b);
    a->addComponent(c);
    const auto order = [&] {
        OrderRecorder recorder;
        MXFMetadataModelCoder(recorder, factory).model({root});
        return recorder.order;
    };
    EXPECT_EQ(order(), "racb");
    b->setDarkProperty(privateLabel(1), {0});
    c->setDarkProperty(privateLabel(2), {0});
    EXPECT_EQ(order(), "racb");
    root->setDarkProperty(mxfutil::orderHintLabel, labels({privateLabel(1), privateLabel(2)}));
    EXPECT_EQ(order(), "rabc");
    root->setDarkProperty(mxfutil::orderHintLabel, labels({privateLabel(1), privateLabel(1)}));
    EXPECT_EQ(failure(order), "no repeated properties in order hint");
    a->setDarkProperty(mxfutil::orderHintLabel, {});
    EXPECT_EQ(failure(order), "single primed set order");
    EXPECT_EQ(failure([&] {
                  MXFMetadataModelCoder(*std::make_unique<OrderRecorder>(), factory).model({root, root});
              }),
              "valid model");
    MXFAES3MetadataModelFactory other;
    EXPECT_EQ(failure([&] { MXFMetadataModelCoder(*std::make_unique<OrderRecorder>(), other).model({root}); }),
              "can handle object");
}

TEST(MetadataCoder, GivesTags) {
    using Coder = MXFMetadataModelCoder;
    const KLVKey x = keys::make(1, 1, 1);
    const KLVKey y = keys::make(1, 1, 2);
    MXFPrimedSet set;
    set.properties = {{x, {}}, {y, {}}};
    Coder::CombinedPrimer combined;
    Coder::insertPrimerForSet(combined, {{x, 0}, {y, 0x8001}, {keys::op1a, 5}}, set);
    EXPECT_EQ(combined, (Coder::CombinedPrimer{{x, 0}, {y, 0x8001}}));
    Coder::insertPrimerForSet(combined, {{x, 0x8001}}, set); // taken
    EXPECT_EQ(combined.at(x), 0);
    Coder::insertPrimerForSet(combined, {{x, 0x3B02}}, set);
    EXPECT_EQ(combined.at(x), 0x3B02);
    EXPECT_EQ(failure([&] { Coder::insertPrimerForSet(combined, {{x, 0x3B03}}, set); }), "consistent primer entry");
    EXPECT_EQ(failure([&] {
                  Coder::insertPrimerForSet(combined = {{y, 0x3B02}}, {{x, 0x3B02}}, set);
              }),
              "consistent primer entry");

    BRYXMetadataFactory factory;
    const auto filler = Filler::create();
    const auto fill = [&](std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            KLVKey label = keys::item;
            util::storeBigEndian(&label.octets[9], i, 4);
            filler->setDarkProperty(label, {});
        }
        OrderRecorder recorder;
        MXFMetadataModelCoder(recorder, factory).model({filler});
        return recorder.tags.back().first;
    };
    EXPECT_EQ(fill(3), 0x8002);
    EXPECT_EQ(fill(32768), 0xFFFF);
    EXPECT_EQ(failure([&] { fill(32769); }), "dynamic tag available");
}

TEST(MetadataCoder, CallsComeInOrder) {
    KLVOctets octets;
    MXFFormatMetadataCoder coder(octets);
    MXFPrimedSet set;
    set.key = keys::localSet;
    EXPECT_EQ(failure([&] { coder.primer({}); }), "before primer");
    coder.startMetadata();
    EXPECT_EQ(failure([&] { coder.startMetadata(); }), "before start");
    EXPECT_EQ(failure([&] { coder.primedSet(set); }), "before primed set");
    EXPECT_EQ(failure([&] {
                  coder.primer({{0x8000, keys::item}, {0x8001, keys::item}});
              }),
              "consistent primer key -> tag");
    EXPECT_EQ(failure([&] {
                  coder.primer({{0x8000, keys::item}, {0x8000, keys::label}});
              }),
              "consistent primer tag -> key");
    EXPECT_EQ(octets.octets, "");
    coder.primer({{0x8000, keys::item}});
    EXPECT_EQ(failure([&] { coder.primer({}); }), "before primer");
    set.properties[keys::label] = {1};
    EXPECT_EQ(failure([&] { coder.primedSet(set); }), "valid property key");
    set.properties = {{keys::item, Octets(65536)}};
    EXPECT_EQ(failure([&] { coder.primedSet(set); }), "property fits item length");
    set.key[5] = 0x23; // two-octet lengths after one-octet tags
    EXPECT_EQ(failure([&] { coder.primedSet(set); }), "supported tag type");
    EXPECT_EQ(failure([&] { coder.setBERLengthForm(0x80); }), "valid BER length form");
    coder.endMetadata();
    EXPECT_EQ(octets.octets.size(), 16U + 4 + 8 + 18);
}

TEST(MetadataCoder, TakesSetsOfApplications) {
    ApplicationFamily factory;
    const auto set = ApplicationSet::create();
    set->setSize(1ULL << 40U);
    set->setNote(L"note");
    const auto owned = Filler::create();
    set->setReferenceDarkProperty(keys::item, owned);
    ModelReader reader(factory);
    const Model model = reader.readRegion(coded(set, factory));
    EXPECT_LOG(reader.log, "");
    ASSERT_EQ(model.size(), 1U);
    EXPECT_EQ(mxfutil::firstDifference(*set, *model.front()), "");
    EXPECT_EQ(model.front()->getReferenceDarkProperty(keys::item)->getInstanceUID(), owned->getInstanceUID());

    EXPECT_EQ(failure([] { MXFSetFactory<Tagless>().create(); }), "property has a label");

    // A factory of the application's own goes with copies of the family that lists it.
    class Loud : public FillerFactory {
    public:
        std::shared_ptr<MetadataRoot> create() const override {
            const auto filler = Filler::create();
            filler->setDuration(7);
            return filler;
        }
    };
    class Family : public MXFMetadataFamily {
    public:
        Family() : MXFMetadataFamily({std::make_shared<Loud>(), std::make_shared<SequenceFactory>()}) {}
    } family;
    Family copy(family);
    EXPECT_EQ(copy.getFactories()[0], family.getFactories()[0]);
    EXPECT_NE(copy.getFactories()[1], family.getFactories()[1]);

    MXFPrimedSet damaged = factory.code(set).first;
    damaged.properties[keys::item] = {1};
    ModelReader again(factory);
    again.readSets({damaged});
    EXPECT_LOG(again.log,
               "error invalid reference dark property (" + toString(keys::item) + ") value - too few octets");
}
