#pragma once

#include <memory>
#include <string>
#include <vector>

#include "klv/GenericKLVReader.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/coding/MXFMetadataModelCoder.h"
#include "mxf/metadata/parsing/MXFHeaderMetadataParser.h"
#include "mxf/metadata/parsing/MXFMetadataModelParser.h"
#include "sdk/BRYXMetadataFactory.h"
#include "support/KLVOctets.h"
#include "support/Recorders.h"

using Model = MXFMetadataModelHandler::Model;

/// Reads header metadata into models, and notes what is found and which sets went by.
class ModelReader : private MXFMetadataHandler {
public:
    explicit ModelReader(MXFMetadataFactory& f) : factory(f) {
        factory.setErrorHandler(errors);
        modelParser_.setErrorHandler(errors.get());
        headerParser_.setErrorHandler(errors.get());
    }

    Log log;
    std::shared_ptr<FindingRecorder> errors = std::make_shared<FindingRecorder>(log);
    MXFMetadataFactory& factory;
    std::vector<Model> models;
    std::vector<MXFPrimedSet> sets; ///< those of known classes
    MXFMetadataHandler::Primer lastPrimer;

    /// Reads a file.
    void readFile(std::istream& stream) {
        MXFReader reader;
        reader.setErrorHandler(errors.get());
        reader.setHeaderMetadataHandler(&headerParser_);
        reader.read(stream);
    }

    /// Reads one header metadata region that stands alone.
    Model readRegion(const std::string& octets) {
        std::istringstream stream(octets);
        GenericKLVReader reader;
        reader.setHandler(&headerParser_);
        reader.setErrorHandler(errors.get());
        models.clear();
        reader.parse(stream, 0);
        return models.empty() ? Model() : models.back();
    }

    /// Hands primed sets to the model parser.
    Model readSets(std::vector<MXFPrimedSet> given) {
        models.clear();
        modelParser_.startMetadata();
        for (MXFPrimedSet& set : given) {
            modelParser_.handlesSet(set.key) ? modelParser_.primedSet(set) : modelParser_.unhandledSet(set);
        }
        modelParser_.endMetadata();
        return models.empty() ? Model() : models.back();
    }

private:
    struct Sink : MXFMetadataModelHandler {
        explicit Sink(std::vector<Model>& m) : models(m) {}
        void startMetadata() override {}
        void endMetadata() override {}
        void model(const Model& model) override { models.push_back(model); }
        std::vector<Model>& models;
    };

    void startMetadata() override { modelParser_.startMetadata(); }
    void endMetadata() override { modelParser_.endMetadata(); }
    void primer(const Primer& primer) override { lastPrimer = primer; }
    bool handlesSet(const KLVKey& key) override { return modelParser_.handlesSet(key); }
    void primedSet(MXFPrimedSet& set) override {
        sets.push_back(set);
        modelParser_.primedSet(set);
    }
    void unhandledSet(const MXFPrimedSet& set) override { modelParser_.unhandledSet(set); }

    Sink sink_{models};
    MXFMetadataModelParser modelParser_{factory, sink_};
    MXFHeaderMetadataParser headerParser_{*this};
};

/// The coded header metadata of @p root.
inline std::string coded(const std::shared_ptr<MetadataRoot>& root, MXFMetadataFactory& factory) {
    KLVOctets octets;
    MXFFormatMetadataCoder coder(octets);
    MXFMetadataModelCoder modelCoder(coder, factory);
    modelCoder.startMetadata();
    modelCoder.model({root});
    modelCoder.endMetadata();
    return octets.octets;
}
