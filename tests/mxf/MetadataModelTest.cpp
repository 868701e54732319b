#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

#include "klv/ValueCoding.h"
#include "mxf/metadata/descriptive/GenericStreamTextBasedSet.h"
#include "mxf/metadata/descriptive/UTF8TextBasedSet.h"
#include "mxf/metadata/descriptors/RGBAPictureDescriptor.h"
#include "mxf/metadata/factories/MXFSetFactory.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "mxf/structure/MXFStaticTags.h"
#include "support/BuiltModel.h"
#include "support/ExpectLog.h"
#include "support/Failure.h"
#include "support/Models.h"
#include "support/Samples.h"
#include "support/SmallStack.h"
#include "util/hex.h"

namespace {

using Octets = std::vector<std::uint8_t>;

KLVKey labelOf(std::uint16_t tag) {
    return *mxfutil::staticLabel(tag);
}

Octets octetsOf(std::uint32_t number) {
    return klvutil::writeValue(uid(number));
}

Octets batchOf(std::initializer_list<std::uint32_t> numbers) {
    std::vector<MXFUID> uids;
    std::transform(numbers.begin(), numbers.end(), std::back_inserter(uids), uid);
    return klvutil::writeValue(uids);
}

/// A primed set with an instance UID, and properties by their static tags.
MXFPrimedSet primed(const KLVKey& key, std::uint32_t number, const std::map<std::uint16_t, Octets>& properties = {}) {
    MXFPrimedSet set;
    set.key = key;
    set.properties[labelOf(0x3C0A)] = octetsOf(number);
    for (const auto& [tag, value] : properties) {
        set.properties[labelOf(tag)] = value;
    }
    return set;
}

/// The findings of a reader that are not about missing properties, which sets made for tests lack in numbers.
std::string findings(const Log& log) {
    Log kept;
    std::copy_if(log.begin(), log.end(), std::back_inserter(kept),
                 [](const std::string& text) { return text.rfind("error missing", 0) != 0; });
    return joined(kept);
}

std::string name(std::uint32_t number) {
    return toString(uid(number));
}

template <class Set>
std::shared_ptr<Set> as(const std::shared_ptr<MetadataRoot>& set) {
    return std::dynamic_pointer_cast<Set>(set);
}

/// The octets of a property's value: how many, of each element of a batch after "[", or "*" if there may be any number.
std::string valueSize(MXFMetadataFactory& factory, const KLVKey& setKey, const MXFProperty& property) {
    const auto isRead = [&](const Octets& value) {
        MXFPrimedSet set = primed(setKey, 1);
        set.properties[property.label()] = value;
        return !factory.parse(set).first->hasDarkProperty(property.label());
    };
    std::string size;
    for (std::uint8_t n = 1; n <= 33; ++n) {
        if (isRead(Octets(n, 0)) && isRead(Octets(n, 'x'))) {
            size = size.empty() ? std::to_string(n) : "*";
        }
    }
    for (std::uint8_t n = 1; size.empty() && n <= 33; ++n) {
        Octets batch{0, 0, 0, 1, 0, 0, 0, n};
        batch.resize(8U + n);
        size = isRead(batch) ? "[" + std::to_string(n) : size;
    }
    return size;
}

/// Whether two values mean the same: a text that ended in NUL characters, an empty batch.
bool isOtherCodingOf(Octets shorter, const Octets& original) {
    if (original == Octets(8, 0)) {
        return shorter == Octets{0, 0, 0, 0, 0, 0, 0, 16};
    }
    shorter.resize(original.size());
    return shorter == original;
}

/// Sequences, each in the one before: @p levels of them below the first.
std::vector<std::shared_ptr<Sequence>> chain(std::size_t levels, bool topDown = true) {
    std::vector<std::shared_ptr<Sequence>> sets{Sequence::create()};
    for (std::size_t i = 0; i < levels; ++i) {
        const auto added = Sequence::create();
        (topDown ? sets.back() : added)->addComponent(topDown ? added : sets.back());
        sets.push_back(added);
    }
    if (!topDown) {
        std::reverse(sets.begin(), sets.end());
    }
    for (std::size_t i = 0; i < sets.size(); ++i) {
        sets[i]->setInstanceUID(uid(static_cast<std::uint32_t>(i)));
    }
    return sets;
}

} // namespace

TEST(MetadataModel, BuiltInCodeReadsBackEqual) {
    BRYXMetadataFactory factory;
    const auto preface = builtModel();
    const std::string octets = coded(preface, factory);
    EXPECT_EQ(coded(preface, factory), octets); // the same model, the same tags
    ModelReader reader(factory);
    const Model model = reader.readRegion(octets);
    EXPECT_LOG(reader.log, "");
    ASSERT_EQ(model.size(), 1U);
    EXPECT_EQ(mxfutil::firstDifference(*preface, *model.front()), "");
    const auto read = as<Preface>(model.front());
    EXPECT_EQ(read->getPrimaryPackage(), read->getContentStorage()->getPackageAt(0));
    EXPECT_EQ(read->getIdentificationAt(0)->getCompanyName(), preface->getIdentificationAt(0)->getCompanyName());
    // Both codecs want 0x8000 and so on: one of them gives way, and nothing else does.
    std::map<KLVKey, std::uint16_t> tags;
    for (const auto& [tag, label] : reader.lastPrimer) {
        tags[label] = tag;
    }
    EXPECT_EQ(tags[klvutil::key("060e2b34.01010105.04010602.010a0000")], 0x8009);
    EXPECT_EQ(tags[klvutil::key("060e2b34.0101010e.04010606.01060000")], 0x8004);
    EXPECT_GE(tags[klvutil::key("060e2b34.0101010d.04010602.020a0000")], 0x8000);
    EXPECT_NE(tags[klvutil::key("060e2b34.0101010d.04010602.020a0000")], 0x8009);

    const auto primaries = klvutil::writeValue(MXFThreeChromaticities{{1, 2}, {3, 4}, {5, 6}});
    EXPECT_NE(octets.find(octets::of(primaries)), std::string::npos);
    EXPECT_EQ(primaries, (Octets{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6})); // red, green, blue
    // A package outside the model cannot be the primary one.
    const auto outside = MaterialPackage::create();
    preface->setPrimaryPackage(outside);
    EXPECT_FALSE(as<Preface>(reader.readRegion(coded(preface, factory)).front())->hasPrimaryPackage());
    preface->setPrimaryPackage(preface->getContentStorage()->getPackageAt(0));

    // One changed value, at the bottom of the tree, is found.
    const auto storage = preface->getContentStorage();
    const auto source = as<SourcePackage>(storage->getPackageAt(1));
    as<MultipleDescriptor>(source->getDescriptor())->getSubDescriptorAt(2)->setLinkedTrackID(9);
    EXPECT_EQ(mxfutil::firstDifference(*preface, *read),
              "Preface.contentStorage[0] ContentStorage.packages[1] SourcePackage.descriptor[0] "
              "MultipleDescriptor.subDescriptors[2] FileDescriptor.linkedTrackID");
}

TEST(MetadataModel, AccessorsKeepTheModelSound) {
    const auto preface = Preface::create();
    const auto storage = ContentStorage::create();
    EXPECT_EQ(preface->getVersion(), 258);
    EXPECT_EQ(failure([&] { preface->getPrimaryPackage(); }), "Preface.primaryPackage is present");
    EXPECT_EQ(failure([&] { preface->getRIPPresent(); }), "Preface.ripPresent is present");
    EXPECT_EQ(failure([&] { preface->getIdentificationAt(0); }), "valid Preface.identifications index");
    EXPECT_EQ(failure([&] { preface->addIdentification(nullptr); }), "Preface.identifications is present");
    preface->setContentStorage(storage);
    EXPECT_EQ(failure([&] { Preface::create()->setContentStorage(storage); }), "object is not owned");
    const auto a = MaterialPackage::create();
    const auto b = SourcePackage::create();
    storage->addPackage(b);
    storage->insertPackageAt(0, a);
    EXPECT_EQ(failure([&] { storage->addPackage(a); }), "object is not owned");
    EXPECT_EQ(storage->getPackageCount(), 2U);
    preface->setPrimaryPackage(a);
    storage->removePackageAt(0);
    EXPECT_FALSE(a->hasOwner());
    EXPECT_TRUE(preface->hasPrimaryPackage());
    const auto data = EssenceContainerData::create();
    EXPECT_FALSE(storage->hasEssenceContainerData());
    storage->addEssenceContainerData(data);
    storage->removeEssenceContainerData();
    EXPECT_FALSE(data->hasOwner());
    EXPECT_FALSE(storage->hasEssenceContainerData());
    preface->setContentStorage(ContentStorage::create());
    EXPECT_FALSE(storage->hasOwner());
    storage->setGenerationUID(uid(1));
    storage->removeGenerationUID();
    EXPECT_EQ(failure([&] { storage->getGenerationUID(); }), "MetadataObject.generationUID is present");

    // Nothing that must be there may be missing when the model is coded, and only a root is coded.
    BRYXMetadataFactory factory;
    EXPECT_EQ(failure([&] { coded(Preface::create(), factory); }), "Preface.contentStorage is present");
    EXPECT_EQ(failure([&] { coded(preface->getContentStorage(), factory); }), "valid model");
    const auto clip = CommentMarker::create();
    clip->setComment(std::wstring(32768, L'x'));
    EXPECT_EQ(failure([&] { coded(clip, factory); }), "property fits item length");
    EXPECT_EQ(failure([&] { PrefaceFactory().code(clip); }), "expected type");
    MXFPendingReferences pending;
    EXPECT_EQ(failure([&] { EssenceContainerDataFactory().parseProperties({}, clip, pending); }),
              "object is a EssenceContainerData");
    EXPECT_EQ(failure([&] { MXFAES3MetadataModelFactory().code(clip); }), "can handle type");
    EXPECT_EQ(failure([&] { MXFAES3MetadataModelFactory().getType(Preface::classKey); }), "can handle set key");
}

TEST(MetadataModel, LongTextsAreCodedWithBERLengths) {
    BRYXMetadataFactory factory;
    const auto text = UTF8TextBasedSet::create();
    text->setTextData(std::string(100000, 'x'));
    const std::string octets = coded(text, factory);
    ModelReader reader(factory);
    const Model model = reader.readRegion(octets);
    EXPECT_LOG(reader.log, "");
    ASSERT_EQ(model.size(), 1U);
    EXPECT_EQ(mxfutil::firstDifference(*text, *model.front()), "");
    EXPECT_EQ(reader.sets.back().key[5], 0x13);
    KLVKey otherForm = Preface::classKey;
    otherForm[7] = 0x77;
    EXPECT_TRUE(factory.canParse(otherForm));
    otherForm[5] = 0x13;
    EXPECT_FALSE(factory.canParse(otherForm));
    otherForm = GenericStreamTextBasedSet::classKey;
    otherForm[5] = 0x13;
    EXPECT_TRUE(factory.canParse(otherForm));
}

TEST(MetadataModel, ReferencesAreResolvedOrReported) {
    const KLVKey storage = ContentStorage::classKey;
    const KLVKey package = MaterialPackage::classKey;
    const KLVKey sequence = Sequence::classKey;
    struct Case {
        const char* what;
        std::vector<MXFPrimedSet> sets;
        std::string findings;
        std::size_t roots;
    };
    const KLVKey unknown = klvutil::key("060e2b34.02530101.0f000000.00000000");
    const std::vector<Case> cases{
        {"forward", {primed(storage, 1, {{0x1901, batchOf({2, 3})}}), primed(package, 2), primed(package, 3)}, "", 1},
        {"backward",
         {primed(package, 2), primed(storage, 1, {{0x1901, batchOf({2})}})},
         "warning backward strong reference - " + name(2) + "; error first object is not model root",
         1},
        {"owned twice",
         {primed(storage, 1, {{0x1901, batchOf({2, 2})}}), primed(package, 2)},
         "error referenced object is already owned - " + name(2),
         1},
        {"dangling",
         {primed(storage, 1, {{0x1901, batchOf({2, 9})}}), primed(package, 2)},
         "warning model has dangling references - " + name(9),
         1},
        {"unreferenced",
         {primed(storage, 1), primed(package, 2)},
         "warning unreferenced objects - MaterialPackage " + name(2),
         2},
        {"duplicate",
         {primed(storage, 1, {{0x1901, batchOf({2})}}), primed(package, 2), primed(package, 2)},
         "error duplicate MetadataRoot.instanceUID - " + name(2),
         1},
        {"wrong class",
         {primed(storage, 1, {{0x1901, batchOf({2})}}), primed(sequence, 2)},
         "error referenced object is of an unexpected class - " + name(2) +
             "; warning unreferenced objects - Sequence " + name(2),
         2},
        {"itself",
         {primed(sequence, 1, {{0x1001, batchOf({1})}})},
         "error referenced object owns the referencing object - " + name(1),
         1},
        {"cycle",
         {primed(sequence, 1, {{0x1001, batchOf({2})}}), primed(sequence, 2, {{0x1001, batchOf({1})}})},
         "error referenced object owns the referencing object - " + name(1),
         1},
        {"around unknown sets",
         {primed(storage, 1, {{0x1902, batchOf({7})}}), primed(unknown, 7, {{0x1901, batchOf({2})}}),
          primed(package, 2)},
         "warning unrecognized (dark) metadata - " + toString(unknown),
         2},
        {"no batch",
         {primed(storage, 1, {{0x1901, octetsOf(2)}})},
         "error invalid ContentStorage.packages value - ",
         1},
    };
    for (const Case& c : cases) {
        BRYXMetadataFactory factory;
        ModelReader reader(factory);
        const Model model = reader.readSets(c.sets);
        EXPECT_EQ(findings(reader.log).substr(0, c.findings.empty() ? std::string::npos : c.findings.size()),
                  c.findings)
            << c.what;
        EXPECT_EQ(model.size(), c.roots) << c.what;
        if (const auto root = as<ContentStorage>(model.front())) {
            for (std::size_t i = 0; i < root->getPackageCount(); ++i) {
                EXPECT_NE(root->getPackageAt(i), nullptr) << c.what;
            }
        }
    }
}

TEST(MetadataModel, UnresolvedReferencesAreTold) {
    BRYXMetadataFactory factory;
    ModelReader reader(factory);
    const auto storage =
        as<ContentStorage>(reader
                               .readSets({primed(ContentStorage::classKey, 1, {{0x1901, batchOf({9, 2, 8, 3})}}),
                                          primed(MaterialPackage::classKey, 2), primed(MaterialPackage::classKey, 3)})
                               .front());
    const MXFSetDescription::Properties& all = storage->getDescription().properties();
    const auto packages = *std::find_if(all.begin(), all.end(), [](const MXFProperty* property) {
        return property->fullName() == "ContentStorage.packages";
    });
    const auto text = [&] {
        std::string result;
        const MXFPropertyValue value = packages->value(*storage);
        for (const MXFScalar& element : std::get<std::vector<MXFScalar>>(value)) {
            result += mxfutil::toText(element).back();
        }
        return result;
    };
    EXPECT_EQ(text(), "9283");
    EXPECT_EQ(storage->getPackageCount(), 2U);
    storage->getPackageAt(1)->setInstanceUID(uid(5));
    EXPECT_EQ(text(), "9285");
    storage->addPackage(SourcePackage::create());
    EXPECT_EQ(text().size(), 3U);
    EXPECT_EQ(failure([&] { packages->value(*Filler::create()); }), "set has property");
    const auto track = reader.readSets({primed(TimelineTrack::classKey, 1, {{0x4803, octetsOf(7)}})}).front();
    EXPECT_EQ(as<TimelineTrack>(track)->getSegment(), nullptr);
    EXPECT_EQ(track->getUnresolvedReferences(labelOf(0x4803)), std::vector<MXFUID>{uid(7)});
    // What leads nowhere is coded as it was.
    EXPECT_EQ(factory.code(storage).first.properties.at(labelOf(0x1901)).size(), 8U + 3 * 16);
    EXPECT_EQ(factory.code(track).first.properties.at(labelOf(0x4803)), octetsOf(7));
    EXPECT_EQ(coded(reader.readRegion(coded(track, factory)).front(), factory), coded(track, factory));
}

TEST(MetadataModel, TellsValuesAsText) {
    const KLVKey label = klvutil::key("060e2b34.04010101.0d010201.01010900");
    KLVKey uuid{uid(0x1234).octets};
    uuid.octets[0] = 0x80;
    const std::string uuidText = toString(uuid);
    const std::pair<MXFScalar, std::string> values[] = {
        {true, "true"},
        {std::int64_t{-5}, "-5"},
        {~std::uint64_t{0}, "18446744073709551615"},
        {std::string("\xC3\xA4"), "\xC3\xA4"},
        {std::string("a\xE4"), "a\\xe4"}, // not UTF-8
        {std::wstring(L"\u00E4"), "\xC3\xA4"},
        {label, "urn:smpte:ul:060e2b34.04010101.0d010201.01010900"},
        {MXFUID{label.octets}, "urn:smpte:ul:060e2b34.04010101.0d010201.01010900"}, // where an identifier is due
        {uuid, uuidText},
        {MXFUID{uuid.octets}, "urn:uuid:80000000-0000-0000-0000-000000001234"}, // in its own order here
        {Rational{30000, 1001}, "30000/1001"},
        {Octets{0, 0xAB}, "00ab"},
        {std::shared_ptr<const MetadataRoot>(), ""},
    };
    for (const auto& [value, text] : values) {
        EXPECT_EQ(mxfutil::toText(value), text);
    }

    // Records stand as texts, and come back from files as they were.
    const auto picture = RGBAPictureDescriptor::create();
    MXFPixelLayout layout;
    layout.components = {{{'R', 8}, {'\x1F', 10}, {'B', 254}}};
    picture->setPixelLayout(layout);
    picture->setMasteringDisplayPrimaries({{1, 2}, {3, 4}, {5, 65535}});
    MXFFormatMetadataModelFactory factory;
    ModelReader reader(factory);
    reader.readRegion(coded(picture, factory));
    std::map<std::string, std::string> texts;
    const auto read = reader.models.at(0).front();
    for (const MXFProperty* const property : read->getDescription().properties()) {
        const MXFPropertyValue value = property->value(*read);
        texts[property->name()] =
            std::holds_alternative<MXFScalar>(value) ? mxfutil::toText(std::get<MXFScalar>(value)) : "";
    }
    EXPECT_EQ(texts["pixelLayout"], "R8(31)10B254");
    EXPECT_EQ(texts["masteringDisplayPrimaries"], "1,2 3,4 5,65535");
}

TEST(MetadataModel, DepthAndSizeAreLimited) {
    const auto nested = [](std::uint32_t count, bool backward) {
        std::vector<MXFPrimedSet> sets;
        for (std::uint32_t i = 1; i <= count; ++i) {
            sets.push_back(primed(Sequence::classKey, i, {{0x1001, batchOf({backward ? i - 1 : i + 1})}}));
        }
        return sets;
    };
    for (const bool backward : {false, true}) {
        BRYXMetadataFactory factory;
        ModelReader reader(factory);
        const Model model = reader.readSets(nested(1000, backward));
        EXPECT_NE(joined(reader.log).find("referenced object is owned too deeply - "), std::string::npos);
        EXPECT_GT(model.size(), 3U);
        for (const auto& root : model) {
            std::size_t levels = 0;
            for (auto set = as<Sequence>(root); set->getComponentCount() > 0; ++levels) {
                set = std::dynamic_pointer_cast<Sequence>(set->getComponentAt(0));
            }
            EXPECT_LE(levels, 256U);
        }
    }
    // A hundred thousand sets that nothing refers to make one short message.
    std::vector<MXFPrimedSet> many;
    for (std::uint32_t i = 1; i <= 100000; ++i) {
        many.push_back(primed(Filler::classKey, i));
    }
    BRYXMetadataFactory factory;
    ModelReader reader(factory);
    EXPECT_EQ(reader.readSets(many).size(), 100000U);
    EXPECT_LT(reader.log.back().size(), 1000U);
    EXPECT_NE(reader.log.back().find("and 99989 more"), std::string::npos) << reader.log.back();
}

TEST(MetadataModel, OwnershipHas256LevelsAtMost) {
    const std::string tooDeep = "ownership has at most 256 levels";
    for (const bool topDown : {true, false}) {
        const auto sets = chain(256, topDown);
        const auto filler = Filler::create();
        EXPECT_EQ(failure([&] { sets.back()->addComponent(filler); }), tooDeep);
        EXPECT_EQ(failure([&] { sets.back()->setReferenceDarkProperty(keys::item, filler); }), tooDeep);
        EXPECT_EQ(failure([&] { Sequence::create()->addComponent(sets.front()); }), tooDeep);
        EXPECT_EQ(failure([&] { CommentMarker::create()->setReferenceDarkProperty(keys::item, sets.front()); }),
                  tooDeep);
        EXPECT_EQ(sets.back()->getComponentCount(), 0U);
        EXPECT_FALSE(sets.front()->hasOwner());
        EXPECT_EQ(failure([&] { sets.back()->addComponent(sets.front()); }), "object does not own this");
        sets[255]->addComponent(filler); // beside the last
    }

    // A tree that takes another place counts as it is then.
    const auto upper = chain(100);
    const auto lower = chain(200);
    EXPECT_EQ(failure([&] { upper[100]->addComponent(lower[0]); }), tooDeep);
    lower[156]->removeComponentAt(0);
    EXPECT_EQ(failure([&] { upper[100]->addComponent(lower[0]); }), tooDeep);
    lower[155]->removeComponentAt(0);
    upper[100]->addComponent(lower[0]);
    EXPECT_EQ(failure([&] { lower[155]->addComponent(lower[156]); }), tooDeep);
    upper[100]->removeComponentAt(0);
    upper[99]->addComponent(lower[0]);
    lower[155]->addComponent(lower[156]);
    EXPECT_EQ(failure([&] { Sequence::create()->addComponent(upper[0]); }), tooDeep);
    // What an owner that is gone leaves has the levels that are left.
    auto root = TimelineTrack::create();
    const auto left = chain(255);
    root->setSegment(left[0]);
    EXPECT_EQ(failure([&] { MaterialPackage::create()->addTrack(root); }), tooDeep);
    root.reset();
    const auto again = TimelineTrack::create();
    again->setSegment(left[0]);
    EXPECT_EQ(failure([&] { left[255]->addComponent(Filler::create()); }), tooDeep);
}

TEST(MetadataModel, DeepModelsNeedLittleStack) {
    BRYXMetadataFactory factory;
    auto a = chain(256);
    auto b = chain(256);
    const std::string octets = coded(a[0], factory);
    const auto last = b[256];
    std::string difference = "none was looked for";
    onStackOf(96U * 1024U, [&] {
        EXPECT_EQ(coded(b[0], factory), octets);
        EXPECT_EQ(mxfutil::firstDifference(*a[0], *b[0]), "");
        last->setDuration(1);
        difference = mxfutil::firstDifference(*a[0], *b[0]);
        a = {a[0]};
        a.clear();
        b = {b[0]};
        b.clear();
    });
    const std::string end = "Sequence.components[0] Component.duration";
    EXPECT_EQ(difference.substr(difference.size() - std::min(difference.size(), end.size())), end);
    EXPECT_FALSE(last->hasOwner());
    EXPECT_EQ(last.use_count(), 1);
}

TEST(MetadataModel, SetsParsedAloneKeepTheirReferences) {
    BRYXMetadataFactory factory;
    const MXFPrimedSet storage =
        primed(ContentStorage::classKey, 1, {{0x1901, batchOf({2, 3})}, {0x1902, batchOf({})}});
    const MXFPrimedSet preface = primed(Preface::classKey, 1, {{0x3B03, octetsOf(4)}, {0x3B08, octetsOf(5)}});
    for (const MXFPrimedSet& set : {storage, preface}) {
        const auto parsed = factory.parse(set).first;
        const MXFProperties properties = factory.code(parsed).first.properties;
        for (const auto& [label, octets] : set.properties) {
            ASSERT_EQ(properties.count(label), 1U) << toString(label);
            EXPECT_EQ(properties.at(label), octets) << toString(label);
        }
        EXPECT_EQ(mxfutil::firstDifference(*parsed, *factory.parse(set).first), "");
    }
    MXFPrimedSet other = storage;
    other.properties[labelOf(0x1901)] = batchOf({2, 4});
    EXPECT_EQ(mxfutil::firstDifference(*factory.parse(storage).first, *factory.parse(other).first),
              "ContentStorage.packages");
    // A tree with such a set in it.
    const auto marker = CommentMarker::create();
    marker->setReferenceDarkProperty(keys::item, factory.parse(storage).first);
    EXPECT_FALSE(coded(marker, factory).empty());
}

TEST(MetadataModel, ReferencesAreResolvedToWhatTheyMayLeadTo) {
    BRYXMetadataFactory factory;
    std::shared_ptr<MetadataRoot> parsed;
    MXFPendingReferences pending;
    std::tie(parsed, pending) =
        factory.parse(primed(ContentStorage::classKey, 1, {{0x1901, batchOf({2, 3, 4})}, {0x1902, batchOf({5})}}));
    const auto storage = as<ContentStorage>(parsed);
    const auto resolve = [&](std::uint32_t number, const std::shared_ptr<MetadataRoot>& target) {
        return failure([&] { pending.find(uid(number))->second->resolve(target); });
    };
    EXPECT_EQ(resolve(2, Sequence::create()), "object is of the class referred to");
    EXPECT_EQ(resolve(2, nullptr), "object is of the class referred to");
    EXPECT_EQ(storage->getUnresolvedReferences(labelOf(0x1901)).size(), 3U);
    const auto three = MaterialPackage::create();
    EXPECT_EQ(resolve(3, three), "none");
    EXPECT_EQ(resolve(3, MaterialPackage::create()), "none"); // has been resolved
    EXPECT_EQ(three->getOwner(), storage);
    EXPECT_EQ(storage->getPackageAt(1), three);

    // A property that is set meanwhile has what it was set to.
    storage->removePackageAt(2);
    storage->removeEssenceContainerData();
    EXPECT_EQ(storage->getPackageCount(), 1U);
    for (const std::uint32_t number : {2U, 4U}) {
        const auto late = MaterialPackage::create();
        EXPECT_EQ(resolve(number, late), "none");
        EXPECT_FALSE(late->hasOwner());
    }
    EXPECT_EQ(resolve(5, EssenceContainerData::create()), "none");
    for (const auto& reference : pending) {
        reference.second->removeUnresolved();
    }
    EXPECT_EQ(storage->getPackageCount(), 1U);
    EXPECT_EQ(storage->getPackageAt(0), three);
    EXPECT_FALSE(storage->hasEssenceContainerData());

    std::tie(parsed, pending) = factory.parse(primed(TimelineTrack::classKey, 1, {{0x4803, octetsOf(2)}}));
    const auto track = as<TimelineTrack>(parsed);
    EXPECT_EQ(resolve(2, Filler::create()), "object is of the class referred to");
    const auto segment = Sequence::create();
    track->setSegment(segment);
    const auto late = Sequence::create();
    EXPECT_EQ(resolve(2, late), "none");
    EXPECT_EQ(track->getSegment(), segment);
    EXPECT_FALSE(late->hasOwner());

    // Reading a set again lets go of what it had.
    MXFPendingReferences again;
    TimelineTrackFactory().parseProperties(primed(TimelineTrack::classKey, 1, {{0x4803, octetsOf(3)}}).properties,
                                           track, again);
    EXPECT_FALSE(segment->hasOwner());
    EXPECT_EQ(track->getUnresolvedReferences(labelOf(0x4803)), std::vector<MXFUID>{uid(3)});
}

TEST(MetadataModel, ValuesOfWrongLengthAreReportedAndKept) {
    BRYXMetadataFactory factory;
    std::size_t tried = 0;
    for (const auto& family : factory.getFactories()) {
        for (const auto& single : dynamic_cast<MXFMetadataModelFactory&>(*family).getFactories()) {
            const auto& setFactory = dynamic_cast<MetadataRootFactory&>(*single);
            const auto example = setFactory.create();
            for (const MXFProperty* property : example->getDescription().properties()) {
                for (const std::size_t size : {0U, 1U, 3U, 9U, 17U, 23U, 33U}) {
                    MXFPrimedSet set = primed(setFactory.getSetKey(), 1);
                    // As a batch, it claims four thousand million elements of one octet.
                    const Octets value(size, 0xFF);
                    set.properties[property->label()] = value;
                    ModelReader reader(factory);
                    const auto object = reader.readSets({set}).front();
                    const bool isText = joined(reader.log).find(property->fullName()) == std::string::npos;
                    EXPECT_NE(object->hasDarkProperty(property->label()), isText) << property->fullName() << size;
                    if (!isText) {
                        EXPECT_FALSE(property->isPresent(*object));
                        EXPECT_EQ(object->getDarkProperty(property->label()), value);
                        const std::string problem = failure(
                            [&] { EXPECT_EQ(factory.code(object).first.properties.at(property->label()), value); });
                        EXPECT_TRUE(problem == "none" || problem.find(" is present") != std::string::npos) << problem;
                        ++tried;
                    }
                }
            }
        }
    }
    EXPECT_GT(tried, 5000U);
    // Setting the property puts an end to what could not be read.
    ModelReader reader(factory);
    const auto preface = as<Preface>(reader.readSets({primed(Preface::classKey, 1, {{0x3B05, {1}}})}).front());
    EXPECT_TRUE(preface->isMissing(labelOf(0x3B02)));
    EXPECT_EQ(preface->getVersion(), 258);
    preface->setVersion(259);
    preface->setLastModifiedDate({});
    EXPECT_FALSE(preface->hasDarkProperty(labelOf(0x3B05)));
    EXPECT_FALSE(preface->isMissing(labelOf(0x3B02)));
}

TEST(MetadataModel, OfEverySampleLosesNothing) {
    for (const auto& path : sampleFiles()) {
        const std::string file = path.filename().string();
        BRYXMetadataFactory factory;
        ModelReader reader(factory);
        std::ifstream stream(path, std::ios::binary);
        reader.readFile(stream);
        std::map<std::streamoff, std::shared_ptr<const MetadataRoot>> objects; // by where they were read
        for (const Model& model : reader.models) {
            MXFOwnedSets work(model.begin(), model.end());
            while (!work.empty()) {
                const auto object = work.front();
                work.pop_front();
                objects.emplace(object->getStartStreampos(), object);
                for (const MXFProperty* property : object->getDescription().properties()) {
                    if (property->kind() == MXFProperty::Kind::StrongReference) {
                        mxfutil::forEachReference(property->value(*object),
                                                  [&](const auto& set) { work.push_back(set); });
                    }
                }
            }
            ModelReader second(factory);
            const Model again = second.readRegion(coded(model.front(), factory));
            EXPECT_EQ(mxfutil::firstDifference(*model.front(), *again.front()), "") << file;
        }
        // Every set of a known class is in the model, and every property in the set, with the octets that it had.
        EXPECT_EQ(objects.size(), reader.sets.size()) << file;
        for (const MXFPrimedSet& set : reader.sets) {
            const auto object = objects.find(static_cast<std::streamoff>(set.position));
            ASSERT_NE(object, objects.end()) << file << set.position;
            const MXFProperties properties = factory.code(object->second).first.properties;
            EXPECT_EQ(properties.size(), set.properties.size()) << file << set.position;
            for (const auto& [label, value] : set.properties) {
                const auto again = properties.find(label);
                ASSERT_NE(again, properties.end()) << file << toString(label);
                EXPECT_TRUE(again->second == value || isOtherCodingOf(again->second, value)) << file << toString(label);
            }
        }
    }
}

TEST(MetadataModel, SetsAgreeWithTheRegisters) {
    // What is optional in the registers, which have AAF in mind as well, and required in MXF files.
    std::set<std::string> requiredHere{"EssenceContainerData.bodySID", "FileDescriptor.essenceContainer",
                                       "FileDescriptor.sampleRate",    "Identification.modificationDate",
                                       "SourceClip.startPosition",     "SourceReference.sourcePackageID"};
    BRYXMetadataFactory factory;
    std::map<std::string, std::map<std::string, const MXFProperty*>> properties; // by class and label
    std::map<std::string, std::string> keys;
    std::map<std::string, KLVKey> examples; // keys of sets that have the properties of a class
    for (const auto& family : factory.getFactories()) {
        for (const auto& single : dynamic_cast<MXFMetadataModelFactory&>(*family).getFactories()) {
            const auto set = dynamic_cast<MetadataRootFactory&>(*single).create();
            const MXFSetDescription& description = set->getDescription();
            for (const MXFProperty* property : description.properties()) {
                examples[property->fullName().substr(0, property->fullName().find('.'))] = description.key();
            }
            keys[description.name()] = toString(description.key());
            for (const MXFProperty* property : description.properties()) {
                const std::string name = property->fullName();
                properties[name.substr(0, name.find('.'))][toString(property->label())] = property;
            }
            EXPECT_EQ(factory.getSetPrimer(description.type()).size(), description.properties().size() + 1);
        }
    }
    EXPECT_EQ(keys.size(), 45U);
    std::ifstream file(BRYX_TEST_DATA "/registers.txt");
    std::string set;
    for (std::string text; std::getline(file, text);) {
        if (text.front() == '#') {
            continue;
        }
        std::istringstream fields(text);
        std::string words[4];
        fields >> words[0] >> words[1] >> words[2] >> words[3];
        std::string& digits = words[text.front() == ' ' ? 0 : 1];
        const std::string label = "urn:smpte:ul:" + digits.substr(0, 8) + "." + digits.substr(8, 8) + "." +
                                  digits.substr(16, 8) + "." + digits.substr(24);
        if (text.front() != ' ') {
            set = words[0];
            EXPECT_TRUE(keys.count(set) == 0 || keys[set] == label) << set;
            continue;
        }
        const auto found = properties[set].find(label);
        ASSERT_NE(found, properties[set].end()) << set << " lacks " << label;
        const MXFProperty& property = *found->second;
        unsigned tag = static_cast<unsigned>(std::stoul(words[1], nullptr, 16));
        if (set == "AVCVideoSubDescriptor") {
            tag = 0x7FFEU + property.label()[13];
        } else if (set == "MPEGVideoDescriptor" || set == "MPEG4VideoSubDescriptor") {
            // In the order of the labels, except that the bit rate comes before profile and level.
            const unsigned number = property.label()[13] - 2U;
            tag = 0x8000U + (number == 9 ? 8 : number == 8 ? 9 : number);
        }
        EXPECT_EQ(property.tag(), tag) << property.fullName();
        EXPECT_EQ(property.isRequired(), words[2] == "r" || requiredHere.erase(property.fullName()) == 1)
            << property.fullName();
        if (examples.count(set) != 0) {
            EXPECT_EQ(valueSize(factory, examples[set], property), words[3]) << property.fullName();
        }
        properties[set].erase(found);
    }
    EXPECT_TRUE(requiredHere.empty());
    for (const auto& [name, rest] : properties) {
        EXPECT_TRUE(rest.empty()) << rest.begin()->second->fullName() << " stands in no register";
    }
}
