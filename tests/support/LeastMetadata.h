#pragma once

#include "mxf/metadata/structural/Preface.h"
#include "sdk/BRYXWriter.h"

/// The least header metadata that can be written.
inline const BRYXHeaderMetadata& leastMetadata() {
    static const BRYXHeaderMetadata metadata = [] {
        const auto preface = Preface::create();
        preface->setOperationalPattern({});
        preface->setEssenceContainers({});
        preface->setDMSchemes({});
        preface->setContentStorage(ContentStorage::create());
        return toBRYXHeaderMetadata(preface);
    }();
    return metadata;
}
