#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "klv/DullErrorHandler.h"
#include "shared/ProgressBar.h"
#include "util/uuid.h"

/// Tells on standard error what is wrong with the file that is read, counts it, and knows where the reader is. Of findings
/// of one kind it tells the first few, and in the end how many more there were.
class ErrorPrinter final : public DullErrorHandler {
public:
    ErrorPrinter(const char* program, ProgressBar& progress) : program_(program), progress_(progress) {}

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void endStream() override { locator_ = nullptr; }
    void error(const util::uuid& id, const std::string& message) override;
    void fatalError(const util::uuid& id, const std::string& message) override { error(id, message); }

    /// Something else that is wrong with the file.
    void error(const std::string& message);
    /// What is no error.
    void remark(const std::string& message);
    /// Nothing more is to come.
    void finish();

    std::uint64_t errors() const { return errors_; }
    /// The first octet of the KLV triplet that the reader deals with.
    std::uint64_t position() const;

private:
    /// Findings of one kind.
    struct Kind {
        std::uint64_t count = 0;
        std::string message; ///< of the first one
    };

    const char* program_;
    ProgressBar& progress_;
    const Locator* locator_ = nullptr;
    std::uint64_t errors_ = 0;
    std::map<util::uuid, Kind> kinds_;
};
