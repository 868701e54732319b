/// Tells what is wrong with an MXF file, by the strictest checks.
///
///     findings FILE
///
/// This is how findings come: an error handler gets each of them, and asks its locator where the reader is. What ends the
/// reading is thrown.

#include <fstream>
#include <iostream>
#include <memory>

#include "sdk/BRYX.h"

namespace {

class FindingPrinter final : public ErrorHandler {
public:
    bool hasErrors = false;

    // A locator is valid until the end of the stream that it comes in.
    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void startStream() override {}
    void endStream() override { locator_ = nullptr; }

    // Findings of one kind have one identifier, whatever their text names: that is what to compare.
    void warning(const util::uuid& /*id*/, const std::string& message) override { print("warning", message); }
    void error(const util::uuid& /*id*/, const std::string& message) override {
        hasErrors = true;
        print("error", message);
    }
    void fatalError(const util::uuid& id, const std::string& message) override { error(id, message); }

private:
    void print(const char* level, const std::string& message) {
        std::cout << level << ": " << message;
        if (locator_ != nullptr) {
            std::cout << " at octet " << std::streamoff{locator_->streampos()};
        }
        std::cout << '\n';
    }

    const Locator* locator_ = nullptr;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: findings FILE\n";
        return 2;
    }
    const auto file = std::make_shared<std::ifstream>(argv[1], std::ios::binary);
    const auto reader = createBRYXReader(file, BRYXValidationMode::Strict);
    const auto printer = std::make_shared<FindingPrinter>();
    reader->setErrorHandler(printer);
    try {
        reader->read();
    } catch (const klvutil::parse_error& error) {
        std::cout << "not read to the end: " << error.what() << " at octet " << std::streamoff{error.position()}
                  << '\n';
        return 1;
    }
    return printer->hasErrors ? 1 : 0;
}
