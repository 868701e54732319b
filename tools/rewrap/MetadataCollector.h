#pragma once

#include <memory>
#include <vector>

#include "klv/DullErrorHandler.h"
#include "klv/DullKLVHandler.h"
#include "mxf/metadata/model/MXFMetadataHandler.h"
#include "mxf/metadata/model/MXFMetadataModelHandler.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/structure/MXFPartitionPack.h"
#include "sdk/BRYXMetadataFactory.h"
#include "sdk/BRYXMetadataParser.h"
#include "shared/ErrorPrinter.h"

/// The header metadata of one partition: its sets as they are, and the model if that holds them whole.
struct Metadata {
    MXFMetadataHandler::Primer primer;
    std::vector<MXFPrimedSet> sets;
    std::shared_ptr<Preface> root; ///< of the model; null if there is none
    bool isModelWhole = false;     ///< whether it holds all sets
};

/// Collects the header metadata of each region: the last one of those that are closed and complete, or else open.
class MetadataCollector final : public MXFMetadataHandler, public MXFMetadataModelHandler, private DullErrorHandler {
public:
    explicit MetadataCollector(ErrorPrinter& errors);

    KLVHandler& handler() { return parser_.handler(); }
    void partition(MXFPartitionStatus status) { status_ = status; }
    const Metadata* found() const { return hasFound_ ? &found_ : nullptr; }

    void startMetadata() override;
    void primer(const Primer& primer) override { region_.primer = primer; }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override { region_.sets.push_back(std::move(set)); }
    void endMetadata() override;

private:
    // What is remarked on about values is not lost, since sets are copied as they are.
    class Remarks final : public DullErrorHandler {
    public:
        explicit Remarks(bool& isWhole) : isWhole_(isWhole) {}
        void warning(const util::uuid& /*id*/, const std::string& /*message*/) override { isWhole_ = false; }
        void error(const util::uuid& /*id*/, const std::string& /*message*/) override { isWhole_ = false; }

    private:
        bool& isWhole_;
    };

    // What is neither the primer nor a set has no place in what is written.
    class Others final : public DullKLVHandler {
    public:
        explicit Others(ErrorPrinter& errors) : errors_(errors) {}
        bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;
        bool startLabel(const KLVKey& key) override { return lost(key); }
        bool startUniversalSet(const KLVKey& key, std::uint64_t /*length*/) override { return lost(key); }
        bool startFixedLengthPack(const KLVKey& key, std::uint64_t /*length*/) override { return lost(key); }
        bool startVariableLengthPack(const KLVKey& key, std::uint64_t /*length*/, KLVFieldForm /*form*/) override {
            return lost(key);
        }
        bool startWrapper(const KLVKey& key, std::uint64_t /*length*/, KLVWrapperKind /*kind*/) override {
            return lost(key);
        }

    private:
        bool lost(const KLVKey& key);

        ErrorPrinter& errors_;
    };

    void model(const Model& model) override;

    // Whatever is remarked on may not come out of the model as it went in.
    void warning(const util::uuid& id, const std::string& message) override;
    void error(const util::uuid& id, const std::string& message) override;

    ErrorPrinter& errors_;
    Others others_;
    Remarks remarks_{isWhole_};
    BRYXMetadataFactory factory_;
    BRYXMetadataParser parser_{factory_, *this};
    MXFPartitionStatus status_ = MXFPartitionStatus::OpenIncomplete;
    Metadata region_;
    bool isWhole_ = false;
    int rank_ = -1;
    Metadata found_;
    bool hasFound_ = false;
};
