/// Lists the packages of an MXF file and their tracks.
///
///     tracks FILE
///
/// This is how little it takes to get at header metadata: a reader, and a handler that gets the models.

#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <system_error>

#include "klv/KLVFindings.h"
#include "mxf/metadata/MXFMetadataSets.h"
#include "sdk/BRYX.h"
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
class TrackLister final : public DullMXFMetadataModelHandler {
public:
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
    const auto file = std::make_shared<std::ifstream>(argv[1], std::ios::binary);
    if (!*file) {
        std::cerr << argv[1] << ": " << std::generic_category().message(errno) << '\n';
        return 1;
    }
    const auto reader = createBRYXReader(file, BRYXValidationMode::None);
    reader->setMetadataHandler(std::make_shared<TrackLister>());
    try {
        reader->read();
    } catch (const klvutil::parse_error& error) {
        const bool isCut = error.id() == klvutil::findings::unsuccessfulRead.id;
        std::cerr << argv[1] << ": " << (isCut ? "the file ends within the KLV triplet" : error.what()) << " at octet "
                  << std::streamoff{error.position()} << '\n';
        return 1;
    }
}
