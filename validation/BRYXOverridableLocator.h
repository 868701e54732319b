#pragma once

#include <ios>
#include <memory>
#include <string>
#include <vector>

#include "klv/ErrorHandler.h"
#include "klv/Locator.h"
#include "util/Api.h"

namespace bryx {

/// A locator that outlives the readings whose positions it tells, and that can be made to tell another one: where
/// something is found wrong later than it is read, the report is to point at what it is about.
///
/// After a reading has ended, the last position is told. Not for use by several threads at once.
class BRYX_API BRYXOverridableLocator : public Locator {
public:
    /// Passes the reports of a reading on to a handler that gets its positions from an overridable locator.
    class BRYX_API ErrorHandler : public bryx::ErrorHandler {
    public:
        /// Requires "error handler is present" and "has locator".
        ErrorHandler(std::shared_ptr<bryx::ErrorHandler> handler, std::shared_ptr<BRYXOverridableLocator> locator);
        ~ErrorHandler() override;

        /// Makes @p locator the current one, and hands the overridable locator on.
        void setLocator(const Locator& locator) override;
        void startStream() override;
        void endStream() override;
        void warning(const util::uuid& id, const std::string& message) override;
        void error(const util::uuid& id, const std::string& message) override;
        void fatalError(const util::uuid& id, const std::string& message) override;

    private:
        template <class Call>
        void beforeStream(Call call);

        std::shared_ptr<bryx::ErrorHandler> handler_;
        std::shared_ptr<BRYXOverridableLocator> locator_;
    };

    ~BRYXOverridableLocator() override;

    /// From now on positions are those of @p locator, which is valid until the stream ends; not owned.
    virtual void setLocator(const Locator& locator);

    /// Requires "has locator", unless a reading has ended before.
    const std::streampos& streampos() const override;

    virtual void overrideLocator(std::streampos position);
    virtual void restoreLocator();

    // Streams may be nested: at the end of one, positions are those of the one around it again.

    virtual void startStream();
    virtual void endStream();

private:
    void leaveStream();

    const Locator* current_ = nullptr;
    std::vector<const Locator*> streams_;
    std::streampos override_ = 0;
    bool isOverridden_ = false;
    std::streampos last_ = 0;
    bool hasLast_ = false;
};

} // namespace bryx
