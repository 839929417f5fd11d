#pragma once
// The conversion engine behind `pack`: metadata, identifiers, modality, encoding, payload and
// thumbnail joined into one Raw Data Storage or Encapsulated Document instance written as a
// DICOM file.

#include "app/DocumentType.h"
#include "app/PayloadParts.h"
#include "app/OptionRecords.h"
#include "app/ReferenceRecord.h"
#include "Foundations/DataModule/CharSet/OutputEncoding.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Foundations/DataModule/Values/ByteBuffer.h"

#include <optional>
#include <string>
#include <vector>

namespace Dicapsule {

// Everything the pack body hands to the engine.
struct ConversionRequest {
    Lumivale::DataModule::ByteBuffer content;  // the packed bytes (a region of the input file, maybe empty)
    std::string original_name;                 // UTF-8
    std::string command_line;
    std::vector<ReferenceRecord> references;
    std::string metadata;  // path or XML text, UTF-8
    IdentifierFields identifier;
    std::optional<std::string> modality;
    Lumivale::DataModule::OutputEncoding::Enum encoding = Lumivale::DataModule::OutputEncoding::unknown;
    std::string product_name;
    std::string product_version;
    std::optional<std::string> thumbnail;  // UTF-8 path
    bool hackforbmpacs = false;
    std::string output;  // UTF-8 path
    bool to_standard_output = false;  // write the file to the standard output instead of output
    bool replace_existing = false;  // --force: take the place of whatever is at output
    bool digest = true;             // record the SHA-256 of the content as written
    // Written as this Encapsulated Document class, the payload in its document element; Raw Data
    // Storage when absent.
    std::optional<DetectedDocument> document;
    // One part of a payload split across the instances of a series: content is that part.
    std::optional<PartFacts> part;
};

// An instance written to a temporary file beside its output, not yet named: the values left to be
// filled in (the whole payload's digest) wait at file.FilledLaterOffsets(); Commit names it.
struct PendingInstance {
    Lumivale::DataModule::DataAdapterModule::DicomCodecModule::DicomFileDataStream file;
    std::string study_instance_uid;  // as written, for the instances that follow in the series
    std::string series_instance_uid;
};

// The engine's result codes; the pack body turns each into its message.
enum class ConversionResult : int {
    written = 0,
    metadata_unusable = 1,
    thumbnail_not_loaded = 2,
    thumbnail_not_inserted = 3,
    output_not_written = 4,
    unexpected = 5,
    imaging_module_unavailable = 6,  // a thumbnail was asked for and no imaging module could be loaded
};

// Build and write the instance. Nothing is created at the output path unless the result is written.
ConversionResult convert(const ConversionRequest& request);

// Build and write the instance as convert does, into pending, left uncommitted.
ConversionResult convert(const ConversionRequest& request, PendingInstance& pending);

}  // namespace Dicapsule
