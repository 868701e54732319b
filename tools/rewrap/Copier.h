#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <set>

#include "klv/DullKLVHandler.h"
#include "klv/KLVFilter.h"
#include "mxf/essence/MXFGCStructureFilter.h"
#include "mxf/essence/MXFGCSystemHandler.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "rewrap/AnySplitter.h"
#include "rewrap/Survey.h"
#include "sdk/BRYXWriter.h"
#include "shared/ErrorPrinter.h"
#include "shared/ProgressBar.h"

/// Hands what is read to the writer: bodies cut into elements, or as they are.
class Copier final : public DullMXFStructureHandler {
public:
    /// Ends the second reading where what is whole ends.
    struct EndOfWhatIsWhole {};

    /// @param keepsLayout copies bodies as they are
    Copier(const Survey& survey, BRYXWriter& writer, bool keepsLayout, ProgressBar& progress, ErrorPrinter& errors);

    KLVHandler& body() { return body_; }
    KLVHandler& genericStream() { return genericStream_; }

    void startPartition(const KLVKey& key, const MXFPartitionPack& pack, std::uint64_t headerStart) override;

    /// Copies what is whole of a clip, after the reading that has ended before it.
    void copy(const CutClip& clip, std::istream& file);

    /// Ends what is being written.
    void finish();

private:
    /// Stops before a content package that is not whole, and tells the writer of system elements when they come: one that
    /// the splitter does not hand on, or that cannot be written, is lost.
    class Structure final : public MXFGCStructureFilter {
    public:
        Structure(Copier& copier, MXFGCStructureHandler& next) : MXFGCStructureFilter(next), copier_(copier) {}
        void startContentPackage() override;
        void endContentPackage() override;
        void startElement(const KLVKey& key) override;
        void endElement(const KLVKey& key) override;
        /// The element that has started is written.
        void tell(const KLVKey& key);

    private:
        Copier& copier_;
        std::map<std::uint32_t, std::int64_t> copied_; ///< content packages by body SID
        bool inPackage_ = false;                       ///< of which the writer has been told
        bool inElement_ = false;
    };

    /// System elements go to the writer.
    class System final : public MXFGCSystemHandler {
    public:
        System(Structure& structure, MXFGCSystemHandler& next) : structure_(structure), next_(next) {}
        bool wantsSystemElement(const KLVKey& key) override;
        void localSet(const KLVKey& key, const MXFGCItems& items) override;
        void fixedLengthPack(const KLVKey& key, const std::uint8_t* data, std::size_t size) override;
        void variableLengthPack(const KLVKey& key, const MXFGCItems& items) override;

    private:
        Structure& structure_;
        MXFGCSystemHandler& next_;
    };

    /// A body goes to its essence container.
    class Body final : public DullKLVFilter {
    public:
        Body(Copier& copier, KLVHandler& receiver) : copier_(copier), receiver_(receiver) { setHandler(&receiver); }
        void setLocator(const Locator& locator) override;
        void startStream(bool accurateLengths) override;
        void endStream(bool stopped) override;
        bool startIndividualItem(const KLVKey& key, std::uint64_t length) override;

    private:
        Copier& copier_;
        KLVHandler& receiver_;
        DullKLVHandler nobody_;
        bool isStream_ = false; ///< whether the receiver takes the start and the end of the stream
    };

    /// The body of a generic stream partition goes to one of its own.
    class GenericStream final : public DullKLVFilter {
    public:
        explicit GenericStream(Copier& copier) : copier_(copier) {}
        void startStream(bool accurateLengths) override;
        void endStream(bool stopped) override;
        // The writer pads on its own.
        void setLocator(const Locator& /*locator*/) override {}

    private:
        Copier& copier_;
    };

    void startBody();
    void describe(BRYXEssenceContainer& container) const;
    void describeClip(BRYXEssenceContainer& container, const IndexTable& table) const;

    const Survey& survey_;
    BRYXWriter& writer_;
    bool keepsLayout_;
    Structure structure_;
    System system_;
    AnySplitter splitter_;
    Body body_;
    GenericStream genericStream_;
    ProgressBar& progress_;
    ErrorPrinter& errors_;
    std::uint32_t bodySID_ = 0;
    bool isOpen_ = false;
    std::uint32_t openSID_ = 0;
    std::set<std::uint32_t> described_; ///< body SIDs
};
