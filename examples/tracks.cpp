/// Lists the packages of an MXF file and their tracks.
///
///     tracks FILE
///
/// This is how header metadata becomes objects: a factory that makes the sets, a model parser that joins them, and a
/// parser for the regions of the file that hold them.

#include <fstream>
#include <iostream>
#include <string>

#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/metadata/structural/TimelineTrack.h"
#include "sdk/BRYXMetadataFactory.h"
#include "util/utf8.h"

namespace {

void print(const Track& track) {
    std::cout << "  track " << track.getTrackID();
    if (track.hasTrackName()) {
        std::cout << " \"" << util::utf8::fromWide(track.getTrackName()) << '"';
    }
    if (const auto* timeline = dynamic_cast<const TimelineTrack*>(&track)) {
        std::cout << ", " << toString(timeline->getEditRate()) << " edit units a second";
    }
    // A damaged file may lack what every track should have: a pointer to a set can be empty.
    if (const auto segment = track.getSegment()) {
        if (segment->hasDuration() && segment->getDuration() >= 0) {
            std::cout << ", " << segment->getDuration() << " of them";
        }
    }
    std::cout << '\n';
}

/// Prints each model that comes. A file repeats its header metadata in other partitions as a rule.
class TrackLister final : public MXFMetadataModelHandler {
public:
    void startMetadata() override {}
    void endMetadata() override {}
    void model(const Model& model) override {
        // The root is the Preface, unless the file is damaged.
        const auto preface = std::dynamic_pointer_cast<const Preface>(model.front());
        const auto storage = preface == nullptr ? nullptr : preface->getContentStorage();
        if (storage == nullptr) {
            std::cout << "header metadata without packages\n";
            return;
        }
        for (std::size_t i = 0; i < storage->getPackageCount(); ++i) {
            const auto package = storage->getPackageAt(i);
            std::cout << package->getDescription().name() << ' ' << toString(package->getPackageUID()) << '\n';
            for (std::size_t j = 0; j < package->getTrackCount(); ++j) {
                print(*package->getTrackAt(j));
            }
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tracks FILE\n";
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    TrackLister lister;
    BRYXMetadataFactory factory;
    MXFMetadataModelParser modelParser(factory, lister);
    MXFHeaderMetadataParser regionParser(modelParser);
    MXFReader reader;
    reader.setHeaderMetadataHandler(&regionParser);
    try {
        reader.read(file);
    } catch (const klvutil::parse_error& error) {
        std::cerr << error.what() << " at octet " << std::streamoff{error.position()} << '\n';
        return 1;
    }
}
