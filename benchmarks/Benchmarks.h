#pragma once

/// The groups of benchmarks, which main() registers: each is the bare minimum of some work, and what the library makes
/// of it.

void registerReading();
void registerValidation();
void registerMetadata();
void registerIndex();
void registerWriting();
