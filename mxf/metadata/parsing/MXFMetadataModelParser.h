#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "klv/Finding.h"
#include "klv/FindingReporter.h"
#include "mxf/metadata/factories/MXFMetadataFactory.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "util/Api.h"

namespace bryx {

class ErrorHandler;

/// Makes models of primed sets: has a factory make each set, and leads references to the sets that they name.
///
/// Reported are, once for each key or instance UID: sets of unknown classes; sets with the instance UID of an earlier one, which are
/// left out; references that lead nowhere, to a set that is owned already, of another class than expected or above the
/// referencing one, which are left unresolved; sets besides the first one that nothing owns, which follow it in the
/// model. What leads to sets of unknown classes, or is led to by them, is not complained of. Unresolved references
/// read as empty pointers, or are not in the lists of the model that is handed on; the sets keep their UIDs.
///
/// Memory is in proportion to the sets of one region, time nearly so.
class BRYX_API MXFMetadataModelParser : public MXFMetadataHandler {
public:
    /// @param factory not owned; decides which sets are in the model
    /// @param handler not owned
    MXFMetadataModelParser(MXFMetadataFactory& factory, MXFMetadataModelHandler& handler);
    ~MXFMetadataModelParser() override;
    MXFMetadataModelParser(const MXFMetadataModelParser&) = delete;
    MXFMetadataModelParser& operator=(const MXFMetadataModelParser&) = delete;

    void startMetadata() override;
    void endMetadata() override;
    /// Does nothing: primed sets have labels in place of tags.
    void primer(const Primer& primer) override;
    bool handlesSet(const KLVKey& key) override;
    /// Requires "factory has created object".
    void primedSet(MXFPrimedSet& set) override;
    void unhandledSet(const MXFPrimedSet& set) override;

    /// Where findings about the model go; not owned. Those about single values go to the factory's error handler.
    virtual void setErrorHandler(ErrorHandler* errorHandler);

private:
    using Reference = std::shared_ptr<dangling_ref_base>;

    /// Leads @p reference to @p target if that is lawful, else reports why not.
    void resolve(const Reference& reference, const std::shared_ptr<MetadataRoot>& target, bool backward);
    void leaveUnresolved();
    void reportDangling();
    void reportUnreferenced();
    void clear();

    MXFMetadataFactory& factory_;
    MXFMetadataModelHandler& handler_;
    ErrorHandler* errorHandler_ = nullptr;

    MXFMetadataModelHandler::Model objects_; ///< those that had no owner when they came
    MXFPendingReferences pending_;
    std::map<MXFUID, std::shared_ptr<MetadataRoot>> byUID_;
    std::vector<Reference> refused_;

    FindingReporter reporter_;          ///< of this region
    std::set<MXFUID> unhandled_;        ///< instance UIDs of sets of unknown classes
    std::set<MXFUID> unhandledTargets_; ///< whatever they may refer to
};

} // namespace bryx
