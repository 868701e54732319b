// An application that has names of its own which the library uses as well, and so leaves out those of the library from the
// global namespace. Tells of a file how many tracks it has, and whether a set of the application's own can be made.

#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <mxf/metadata/MXFMetadataSets.h>
#include <mxf/metadata/factories/MXFSetFactory.h>
#include <sdk/BRYX.h>

struct Event {
    int frame = 0;
};

struct Track {
    Event first;
};

namespace util {

int answer() {
    return 42;
}

} // namespace util

class ErrorHandler {};

namespace house {

class ShelfMark : public bryx::DescriptiveMetadataFramework {
    BRYX_SET(ShelfMark, bryx::DescriptiveMetadataFramework, "060e2b34.02530101.0f010100.00000100");

    BRYX_REQUIRED(Shelf, shelf, std::uint32_t, "060e2b34.01010101.0f010100.00000101");
    BRYX_OPTIONAL_STRONG_REFERENCE(Segment, segment, bryx::Segment, "060e2b34.01010101.0f010100.00000102");

protected:
    ShelfMark() = default;
};

} // namespace house

namespace {

struct Counter : bryx::DullMXFMetadataModelHandler {
    void model(const Model& model) override {
        const auto preface = std::dynamic_pointer_cast<bryx::Preface>(model.front());
        for (std::size_t i = 0; i < preface->getContentStorage()->getPackageCount(); ++i) {
            tracks += preface->getContentStorage()->getPackageAt(i)->getTrackCount();
        }
    }
    std::size_t tracks = 0;
};

} // namespace

int main(int, char** argv) {
    const auto counter = std::make_shared<Counter>();
    const auto reader = bryx::createBRYXReader(std::make_shared<std::ifstream>(argv[1], std::ios::binary),
                                               bryx::BRYXValidationMode::None);
    reader->setMetadataHandler(counter);
    reader->read();
    bryx::MXFSetFactory<house::ShelfMark> factory;
    const auto mark = house::ShelfMark::create();
    mark->setShelf(static_cast<std::uint32_t>(util::answer() + Track().first.frame));
    std::cout << counter->tracks << " tracks, shelf " << mark->getShelf() << " of a " << mark->getDescription().name()
              << '\n';
}
