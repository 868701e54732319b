#include "extract/Output.h"

#include <iostream>

#include "shared/OutputFile.h"

void Output::write(const std::uint8_t* data, std::uint64_t size) {
    if (name_ != "-" && !file_.is_open()) {
        file_.open(name_, std::ios::binary);
        check(file_);
    }
    check(stream().write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size)));
}

void Output::finish() {
    check(stream().flush());
}

std::ostream& Output::stream() {
    if (name_ == "-") {
        return std::cout;
    }
    return file_;
}

void Output::check(const std::ostream& stream) const {
    if (!stream) {
        throw fileFailure(name_ == "-" ? "standard output" : name_);
    }
}
