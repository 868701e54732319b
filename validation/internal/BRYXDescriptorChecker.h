#pragma once

#include <cstdint>
#include <set>

#include "mxf/metadata/structural/Preface.h"
#include "validation/internal/BRYXModelChecker.h"

class CDCIPictureDescriptor;
class FileDescriptor;
class GenericDescriptor;
class MultipleDescriptor;
class PictureDescriptor;
class SoundDescriptor;
class SourcePackage;
class WaveAudioDescriptor;

/// Checks the descriptors of a model: their numbers, and what they name.
class BRYXDescriptorChecker : public BRYXModelChecker {
public:
    BRYXDescriptorChecker(const BRYXValidator& validator, const Preface& preface);

    void check(const SourcePackage& package) const;

private:
    void checkDescriptor(const SourcePackage& package, const FileDescriptor& descriptor) const;
    void checkFile(const SourcePackage& package, const FileDescriptor& descriptor) const;
    void checkMultiple(const SourcePackage& package, const MultipleDescriptor& descriptor) const;
    void checkPicture(const PictureDescriptor& descriptor) const;
    void checkCDCI(const CDCIPictureDescriptor& descriptor) const;
    void checkSound(const SoundDescriptor& descriptor) const;
    void checkWave(const WaveAudioDescriptor& descriptor) const;
    void checkLabels(const FileDescriptor& descriptor) const;

    std::set<KLVKey> essenceContainers_; ///< of the Preface
};
