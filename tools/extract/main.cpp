/// Writes the essence of one track of an MXF file, octet for octet, to a file or to standard output.
///
///     extract FILE KEY|TRACKNUMBER[@BODYSID] OUT
///
/// KEY is the key of the elements as inspect prints it, TRACKNUMBER its last four octets as a number: what the track in
/// the header metadata has. BODYSID names the essence container; without it, the first one that has such an element is
/// meant. OUT is "-" for standard output. Exits with 0 if there was any essence and no error, else with 1, or with 2 if
/// it was called wrongly.

#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "klv/ErrorHandler.h"
#include "klv/Locator.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/essence/MXFGCChunkedEssenceHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "sdk/BRYXEssenceSplitter.h"
#include "shared/InputFile.h"
#include "shared/ProgressBar.h"
#include "util/byte_order.h"

namespace {

/// Tells of errors on standard error, and knows where the reader is.
class ErrorPrinter final : public ErrorHandler {
public:
    explicit ErrorPrinter(ProgressBar& progress) : progress_(progress) {}

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override {}
    void endStream() override { locator_ = nullptr; }
    void warning(const util::uuid& /*id*/, const std::string& /*message*/) override {}
    void error(const util::uuid& /*id*/, const std::string& message) override {
        ++errors_;
        progress_.clear();
        std::cerr << "extract: " << message << " at octet " << position() << '\n';
    }
    void fatalError(const util::uuid& id, const std::string& message) override { error(id, message); }

    std::uint64_t errors() const { return errors_; }
    std::uint64_t position() const {
        return locator_ == nullptr ? 0 : static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
    }

private:
    ProgressBar& progress_;
    const Locator* locator_ = nullptr;
    std::uint64_t errors_ = 0;
};

/// Which elements are meant: those with a key, or those whose key ends in a track number; in one essence container, or in
/// whatever it is.
class Selection {
public:
    explicit Selection(std::string text) {
        const std::size_t at = text.find('@');
        if (at != std::string::npos) {
            bodySID_ = number(text.substr(at + 1), 0);
            text.resize(at);
        }
        const std::string prefix = "urn:smpte:ul:";
        if (text.compare(0, prefix.size(), prefix) == 0) {
            text.erase(0, prefix.size());
        }
        std::string digits;
        for (const char c : text) {
            if (c != '.') {
                digits += c;
            }
        }
        if (digits.size() == 32) {
            key_.emplace();
            for (std::size_t i = 0; i < 16; ++i) {
                (*key_)[i] = static_cast<std::uint8_t>(number(digits.substr(2 * i, 2), 16));
            }
        } else {
            trackNumber_ = number(text, 0);
        }
    }

    bool includes(const KLVKey& key) const {
        return key_ ? key == *key_ : util::loadBigEndian<std::uint32_t>(&key.octets[12]) == trackNumber_;
    }

    const std::optional<std::uint32_t>& bodySID() const { return bodySID_; }

private:
    static std::uint32_t number(const std::string& text, int base) {
        std::size_t end = 0;
        const unsigned long value = std::stoul(text, &end, base);
        if (end != text.size() || value > 0xFFFFFFFF) {
            throw std::invalid_argument(text);
        }
        return static_cast<std::uint32_t>(value);
    }

    std::optional<KLVKey> key_;
    std::uint32_t trackNumber_ = 0;
    std::optional<std::uint32_t> bodySID_;
};

/// What is written: standard output, or a file, which is not touched before there is something to write.
class Output {
public:
    explicit Output(std::string name) : name_(std::move(name)) {}

    /// Throws if that is not possible.
    void write(const std::uint8_t* data, std::uint64_t size) {
        if (name_ != "-" && !file_.is_open()) {
            file_.open(name_, std::ios::binary);
        }
        check(stream().write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size)));
    }
    void finish() { check(stream().flush()); }

private:
    std::ostream& stream() {
        if (name_ == "-") {
            return std::cout;
        }
        return file_;
    }
    void check(const std::ostream& stream) const {
        if (!stream) {
            throw std::runtime_error(name_ + " cannot be written");
        }
    }

    std::string name_;
    std::ofstream file_;
};

/// Takes as essence what a Generic Container has, and what is selected, whatever it is.
class Classifier final : public BRYXGCEssenceKeyClassifier {
public:
    explicit Classifier(const Selection& selection) : selection_(selection) {}

    MXFGCEssenceKind classify(const KLVKey& key) const override {
        const MXFGCEssenceKind kind = mxfutil::gcEssenceKind(key);
        return kind == MXFGCEssenceKind::None && selection_.includes(key) ? MXFGCEssenceKind::Data : kind;
    }

private:
    const Selection& selection_;
};

/// Takes elements in chunks, in a buffer of its own, so that memory does not depend on how long they are.
class Extractor final : public DullMXFStructureHandler, public MXFGCEssenceHandler, public MXFGCChunkedEssenceHandler {
public:
    Extractor(const Selection& selection, Output& out, ProgressBar& progress, const ErrorPrinter& positions)
        : selection_(selection), out_(out), progress_(progress), positions_(positions), buffer_(1U << 20U),
          container_(selection.bodySID()) {}

    std::uint64_t elements() const { return elements_; }
    /// Whether elements of another essence container are meant as well, and were left out.
    const std::optional<std::uint32_t>& otherContainer() const { return otherContainer_; }

    void startPartition(const KLVKey& /*key*/, const MXFPartitionPack& pack, std::uint64_t /*headerStart*/) override {
        bodySID_ = pack.bodySID;
    }

    bool startElement(const KLVKey& key, std::uint64_t /*length*/, std::uint8_t*& /*buffer*/,
                      std::uint64_t& /*size*/) override {
        progress_.reached(positions_.position());
        if (!selection_.includes(key)) {
            return false;
        }
        if (!container_) {
            container_ = bodySID_;
        }
        if (*container_ != bodySID_) {
            otherContainer_ = bodySID_;
            return false;
        }
        ++elements_;
        return true;
    }
    bool startChunkedElement(const KLVKey& /*key*/, std::uint64_t length, std::uint64_t offset, std::uint64_t& size,
                             std::uint8_t*& buffer) override {
        progress_.reached(positions_.position() + offset);
        size = std::min<std::uint64_t>(buffer_.size(), length - offset);
        buffer = buffer_.data();
        return true;
    }
    void pictureElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                        std::uint64_t /*offset*/) override {
        write(data, size);
    }
    void soundElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                      std::uint64_t /*offset*/) override {
        write(data, size);
    }
    void dataElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                     std::uint64_t /*offset*/) override {
        write(data, size);
    }
    void compoundElement(const KLVKey& /*key*/, const std::uint8_t* data, std::uint64_t size,
                         std::uint64_t /*offset*/) override {
        write(data, size);
    }
    void setLengthForm(std::uint8_t /*form*/) override {}

private:
    void write(const std::uint8_t* data, std::uint64_t size) { out_.write(data, size); }

    const Selection& selection_;
    Output& out_;
    ProgressBar& progress_;
    const ErrorPrinter& positions_;
    std::vector<std::uint8_t> buffer_;
    std::uint64_t elements_ = 0;
    std::uint32_t bodySID_ = 0; ///< of the partition that is read
    std::optional<std::uint32_t> container_;
    std::optional<std::uint32_t> otherContainer_;
};

int extract(std::istream& file, const Selection& selection, Output& out) {
    ProgressBar progress(sizeOf(file));
    ErrorPrinter errors(progress);
    Extractor extractor(selection, out, progress, errors);
    const Classifier classifier(selection);
    BRYXEssenceSplitter splitter(nullptr, nullptr, &extractor);
    splitter.setEssenceKeyClassifier(&classifier);
    MXFReader reader;
    reader.setStructureHandler(&extractor);
    reader.setBodyHandler(&splitter);
    reader.setGenericStreamHandler(&splitter);
    reader.setErrorHandler(&errors);
    std::string problem;
    try {
        reader.read(file);
        if (extractor.elements() == 0) {
            problem = "there is no such element";
        } else {
            out.finish();
        }
    } catch (const std::exception& error) {
        problem = error.what();
    }
    progress.clear();
    if (extractor.otherContainer() && !selection.bodySID()) {
        std::cerr << "extract: such elements of essence container " << *extractor.otherContainer()
                  << " are left out; add @" << *extractor.otherContainer() << " to have those\n";
    }
    if (!problem.empty()) {
        std::cerr << "extract: " << problem << '\n';
    }
    return problem.empty() && errors.errors() == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    std::optional<Selection> selection;
    try {
        if (argc == 4) {
            selection.emplace(argv[2]);
        }
    } catch (const std::logic_error&) {
        std::cerr << "extract: " << argv[2] << " is neither a key nor a track number\n";
    }
    if (!selection) {
        std::cerr << "usage: extract FILE KEY|TRACKNUMBER[@BODYSID] OUT\n";
        return 2;
    }
    std::ifstream file;
    if (!openInput(file, argv[1], "extract")) {
        return 1;
    }
    std::error_code unknown;
    if (std::filesystem::equivalent(argv[1], argv[3], unknown)) {
        std::cerr << "extract: " << argv[3] << " is what is read\n";
        return 1;
    }
    Output out(argv[3]);
    return extract(file, *selection, out);
}
