/// Writes what fuzzing starts from: make_seeds FOLDER
///
/// The inputs go to the folder, and to FOLDER.dict a dictionary of what a fuzzer would hardly guess.

#include <fstream>
#include <iomanip>
#include <set>

#include "BuiltRegions.h"
#include "mxf/metadata/factories/MetadataRootFactory.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "mxf/structure/MXFPrimer.h"
#include "support/BuiltModel.h"
#include "support/GoodClip.h"
#include "support/Models.h"

namespace {

/// Keys, beginnings of keys, length fields, and what stands for the properties of index table segments and of all sets
/// that are known: their local tags, or the labels of those that have none of their own.
std::set<std::string> words() {
    std::set<std::string> words = {octets::length(16), octets::length(~std::uint64_t{0} >> 1U, 0x88)};
    for (const KLVKey& key : {mxfutil::partitionPackKey(MXFPartitionKind::Header, MXFPartitionStatus::ClosedComplete),
                              mxfutil::partitionPackKey(MXFPartitionKind::Body, MXFPartitionStatus::ClosedComplete),
                              mxfutil::partitionPackKey(MXFPartitionKind::Body, MXFPartitionStatus::GenericStream),
                              mxfutil::partitionPackKey(MXFPartitionKind::Footer, MXFPartitionStatus::ClosedComplete),
                              mxfutil::primerPackKey, mxfutil::indexTableSegmentKey, mxfutil::randomIndexPackKey,
                              klvutil::fillKey, mxfutil::sdtiCPSystemMetadataKey, mxfutil::pdProxySetKey, keys::picture,
                              GoodClip::sound1, mxfutil::orderHintLabel}) {
        words.insert(octets::key(key));
    }
    for (int kind = 2; kind < 7; ++kind) {
        words.insert(octets::key(mxfutil::sdtiCPElementKey(static_cast<mxfutil::SDTICPElement>(kind), 1)));
    }
    for (const KLVKey& key : {keys::item, keys::universalSet, keys::localSet, keys::make(2, 0x13), keys::variablePack,
                              keys::fixedPack, keys::wrapper, keys::label}) {
        words.insert(octets::key(key).substr(0, 6));
    }
    const MXFIndexTableSegment segment;
    MXFIndexTableSegment::properties(segment, [&](const char*, std::uint16_t tag, auto, const auto&) {
        words.insert(octets::of(klvutil::writeValue(tag)));
    });
    BRYXMetadataFactory all;
    for (const auto& family : all.getFactories()) {
        for (const auto& factory : dynamic_cast<MXFMetadataFamily&>(*family).getFactories()) {
            auto& sets = dynamic_cast<MetadataRootFactory&>(*factory);
            words.insert(octets::key(sets.getSetKey()));
            for (const auto& [label, tag] : sets.getSetPrimer(sets.getType())) {
                words.insert(tag == 0 ? octets::key(label) : octets::of(klvutil::writeValue(tag)));
            }
        }
    }
    return words;
}

void writeDictionary(std::ostream& file) {
    file << std::hex << std::setfill('0');
    for (const std::string& word : words()) {
        file << '"';
        for (const char octet : word) {
            file << "\\x" << std::setw(2) << int{static_cast<std::uint8_t>(octet)};
        }
        file << "\"\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const std::string folder = argv[1];
    const std::string whole = FileBuilder::whole().file;
    BRYXMetadataFactory factory;
    const auto model = builtModel();
    const auto storage = model->getContentStorage();
    const auto material = std::dynamic_pointer_cast<MaterialPackage>(storage->getPackageAt(0));
    ClipOptions small;
    small.frames = 2;
    small.pictureSize = 20;
    small.partitionDuration = 1;
    for (const std::string& seed : {GoodClip(small).octets, whole, "run-in" + whole, whole.substr(0, 300),
                                    coded(model, factory), coded((storage->removePackageAt(0), material), factory),
                                    builtBody(), builtBody() + builtBody(), builtIndex()}) {
        std::ofstream file(folder + "/seed" + std::to_string(seed.size()), std::ios::binary);
        file << seed << '\0';
        if (!file.flush()) {
            return 1;
        }
    }
    std::ofstream dictionary(folder + ".dict");
    writeDictionary(dictionary);
    return dictionary.flush() ? 0 : 1;
}
