#include <gtest/gtest.h>

#include "klv/parse_error.h"
#include "mxf/index/MXFIndexCoder.h"
#include "support/KLVOctets.h"
#include "validation/Faults.h"

namespace {

/// Plants each fault in a file of its own, and expects it to be found where it is, and nothing else worse than a warning.
void expectFound(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.check.name);
        GoodClip clip(fault.options);
        for (const auto& finding : validate(clip.octets, BRYXValidationMode::Strict).all) {
            ADD_FAILURE() << finding.message << " at " << finding.position << " before anything is altered";
        }
        fault.plant(clip);
        const Findings found = validate(clip.octets, fault.check.mode, fault.wanted);
        EXPECT_EQ(found.positionsOf(fault.check.finding),
                  std::set<std::uint64_t>(clip.altered.begin(), clip.altered.end()));
        for (const auto& finding : found.all) {
            const bool isPlanted = finding.id == fault.check.finding.id;
            EXPECT_TRUE(isPlanted ? finding.level == fault.check.finding.level
                                  : finding.level == klvutil::FindingLevel::warning)
                << finding.message << " at " << finding.position;
        }
        const auto before = static_cast<BRYXValidationMode::Enum>(fault.check.mode - 1);
        EXPECT_TRUE(validate(clip.octets, before, fault.wanted).positionsOf(fault.check.finding).empty());
    }
}

} // namespace

TEST(BRYXValidation, FindsFaultsOfTheStructure) {
    expectFound(structureFaults());
}
TEST(BRYXValidation, FindsFaultsOfPackages) {
    expectFound(packageFaults());
}
TEST(BRYXValidation, FindsFaultsOfDescriptors) {
    expectFound(descriptorFaults());
}
TEST(BRYXValidation, FindsFaultsOfEssence) {
    expectFound(essenceFaults());
}
TEST(BRYXValidation, FindsFaultsOfIndexTables) {
    expectFound(indexFaults());
}

TEST(BRYXValidation, HasAFaultForEachCheck) {
    std::set<util::uuid> planted;
    for (const auto& faults :
         {structureFaults(), packageFaults(), descriptorFaults(), essenceFaults(), indexFaults()}) {
        for (const Fault& fault : faults) {
            planted.insert(fault.check.finding.id);
        }
    }
    for (const BRYXCheckGroup& group : getBRYXChecks()) {
        for (const BRYXCheck* check : group.checks) {
            EXPECT_EQ(planted.count(check->finding.id), 1U) << check->name;
        }
    }
}

/// Each octet of each partition pack and of the random index pack is held against something, except the register version in
/// the key of the latter.
TEST(BRYXValidation, FindsEachFlippedOctetOfAPack) {
    const GoodClip clip;
    auto packs = clip.packs();
    packs.push_back(clip.all(mxfutil::randomIndexPackKey).front());
    for (const GoodClip::Triplet& pack : packs) {
        for (std::uint64_t octet = pack.position; octet < pack.end; ++octet) {
            for (const int flip : {0x01, 0x80, 0xFF}) {
                std::string damaged = clip.octets;
                damaged[octet] = static_cast<char>(damaged[octet] ^ flip);
                try {
                    EXPECT_TRUE(!validate(damaged, BRYXValidationMode::Strict).all.empty() ||
                                octet == packs.back().position + 7)
                        << octet - pack.position << " of the pack at " << pack.position << ", " << flip;
                } catch (const klvutil::parse_error&) {
                    continue; // is as good
                }
            }
        }
    }
}

/// Edit units may be divided into segments in another way where they are repeated, but must stay what they are.
TEST(BRYXValidation, ComparesSegmentsThatRepeatOthers) {
    const auto index = [](std::initializer_list<std::int64_t> borders, std::uint8_t flags) {
        KLVOctets octets;
        MXFIndexCoder coder(octets);
        coder.startIndex();
        for (auto border = borders.begin(); border + 1 != borders.end(); ++border) {
            MXFIndexTableSegment segment;
            segment.indexEditRate = {25, 1};
            segment.indexStartPosition = *border;
            segment.indexDuration = border[1] - *border;
            segment.indexSID = 2;
            segment.bodySID = 1;
            for (std::int64_t unit = *border; unit < border[1]; ++unit) {
                segment.indexEntryArray.push_back({0, 0, flags, static_cast<std::uint64_t>(unit), {}, {}});
            }
            coder.indexTableSegment(segment);
        }
        return octets.octets;
    };
    const auto repetitions = [&](std::uint8_t flags) {
        FileBuilder file;
        file.partition(MXFPartitionKind::Header, {}, index({0, 2, 4, 6}, 0))
            .partition(MXFPartitionKind::Footer, {}, index({0, 4, 6}, flags));
        return validate(file.file, BRYXValidationMode::Strict)
            .positionsOf(BRYXIndexChecks::inconsistentRepetition.finding)
            .size();
    };
    EXPECT_EQ(repetitions(0), 0U);
    EXPECT_EQ(repetitions(0x80), 2U);
}
