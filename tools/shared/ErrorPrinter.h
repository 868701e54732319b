#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "klv/DullErrorHandler.h"
#include "klv/parse_error.h"
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
    /// Reading has ended with @p failure, which may have been reported just before it was thrown.
    /// @param summary what that means for the file
    void readingEnded(const klvutil::parse_error& failure, const std::string& summary);
    /// What is no error.
    void remark(const std::string& message);
    /// What is no error, and may come as often as findings of one kind.
    void remark(const util::uuid& id, const std::string& message);
    /// Nothing more is to come.
    void finish();

    std::uint64_t errors() const { return errors_; }
    /// The first octet of the KLV triplet that the reader deals with.
    std::uint64_t position() const;

private:
    /// Findings of one kind.
    struct Kind {
        std::uint64_t count = 0;
        std::string first;  ///< message
        std::string latest; ///< message
    };

    /// Counts a finding, and returns whether it is to be told.
    bool isAmongFirst(const util::uuid& id, const std::string& message);

    const char* program_;
    ProgressBar& progress_;
    const Locator* locator_ = nullptr;
    std::uint64_t errors_ = 0;
    std::map<util::uuid, Kind> kinds_;
};
