/// Reads the essence of an MXF file into memory of its own, and prints a check sum of each track.
///
///     essence FILE
///
/// This is how to get at pictures and sound: a handler says for each element whether it wants it and where to put it, and
/// gets it by the operation of its kind.

#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <vector>

#include "sdk/BRYX.h"

namespace {

/// Adds the elements of each track up (Fletcher's check sum).
class CheckSums final : public MXFGCEssenceHandler {
public:
    void print() const {
        for (const auto& [key, track] : tracks_) {
            std::cout << toString(key) << ": " << track.elements << " elements, " << track.octets << " octets, sum "
                      << track.second * 65536 + track.first << '\n';
        }
    }

    bool startElement(const KLVKey& key, std::uint64_t length, std::uint8_t*& buffer, std::uint64_t& size) override {
        // The length is what the file claims: never make room for any number of octets.
        constexpr std::uint64_t most = 100'000'000;
        if (length > most) {
            std::cerr << "an element of " << toString(key) << " is left out: it has " << length << " octets\n";
            return false;
        }
        // One buffer serves all elements, since each is delivered before the next one begins.
        if (buffer_.size() < length) {
            buffer_.resize(length);
        }
        buffer = buffer_.data();
        size = buffer_.size();
        return true;
    }
    void pictureElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                        std::uint64_t /*offset*/) override {
        add(key, data, size);
    }
    void soundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                      std::uint64_t /*offset*/) override {
        add(key, data, size);
    }
    void dataElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                     std::uint64_t /*offset*/) override {
        add(key, data, size);
    }
    void compoundElement(const KLVKey& key, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t /*offset*/) override {
        add(key, data, size);
    }
    void setLengthForm(std::uint8_t /*form*/) override {}

private:
    struct Track {
        std::uint64_t elements = 0;
        std::uint64_t octets = 0;
        std::uint32_t first = 0;
        std::uint32_t second = 0;
    };

    void add(const KLVKey& key, const std::uint8_t* data, std::uint64_t size) {
        Track& track = tracks_[key];
        ++track.elements;
        track.octets += size;
        for (std::uint64_t i = 0; i < size; ++i) {
            track.first = (track.first + data[i]) % 65535;
            track.second = (track.second + track.first) % 65535;
        }
    }

    std::vector<std::uint8_t> buffer_;
    std::map<KLVKey, Track> tracks_; ///< by the keys of their elements
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: essence FILE\n";
        return 2;
    }
    const auto file = std::make_shared<std::ifstream>(argv[1], std::ios::binary);
    const auto reader = createBRYXReader(file, BRYXValidationMode::None);
    const auto sums = std::make_shared<CheckSums>();
    reader->setEssenceHandler(sums);
    int status = 0;
    try {
        reader->read();
    } catch (const klvutil::parse_error& error) {
        std::cerr << error.what() << " at octet " << std::streamoff{error.position()} << '\n';
        status = 1;
    }
    sums->print();
    return status;
}
