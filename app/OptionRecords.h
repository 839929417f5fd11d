#pragma once
// The option records that the operation bodies read, built from the command line.

#include "app/ReferenceRecord.h"
#include "Foundations/DataModule/CharSet/OutputEncoding.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Dicapsule {

// The fields of --Identifier "[Study]:[Series]:[Instance]:[InstanceNumber]".
struct IdentifierFields {
    std::optional<std::string> study_instance_uid;
    std::optional<std::string> series_instance_uid;
    std::optional<std::string> sop_instance_uid;
    std::int32_t instance_number = 1;

    bool operator==(const IdentifierFields&) const = default;
};

// --class: what kind of instance pack writes.
enum class PackClass {
    raw,        // Raw Data Storage, the payload in the custom data
    document,   // the payload's standard Encapsulated Document class; other payloads are refused
    automatic,  // document where the payload is of such a class, raw otherwise
};

struct PackRecord {
    boost::filesystem::path input;  // "-": the standard input
    std::optional<std::string> name;  // --name: the original name to store, UTF-8
    std::string metadata;  // a path or the XML text itself, UTF-8
    IdentifierFields identifier;
    std::vector<ReferenceRecord> references;
    std::optional<std::string> modality;
    Lumivale::DataModule::OutputEncoding::Enum encoding = Lumivale::DataModule::OutputEncoding::unknown;
    std::optional<boost::filesystem::path> thumbnail;
    boost::filesystem::path output;  // always resolved; "-": the standard output
    bool force = false;
    bool hackforbmpacs = false;
    bool digest = true;  // record the payload's SHA-256 (off with --no-digest)
    PackClass pack_class = PackClass::raw;
};

// --output: write exactly this file.
struct OutputFile {
    boost::filesystem::path path;
    bool operator==(const OutputFile&) const = default;
};

// --Output (default "."): write into this directory, under a derived name or the original one.
struct OutputDirectory {
    boost::filesystem::path path;
    bool use_original_name = false;
    bool operator==(const OutputDirectory&) const = default;
};

struct UnpackRecord {
    boost::filesystem::path input;
    std::vector<boost::filesystem::path> other_inputs;  // the other parts of a split payload, as given
    std::variant<OutputFile, OutputDirectory> target;
    bool force = false;
    bool verify = true;  // check the payload against its recorded digest (off with --no-verify)
};

// What info prints: the XML document, or one JSON object.
enum class InfoFormat { xml, json };

struct InfoRecord {
    boost::filesystem::path input;
    InfoFormat format = InfoFormat::xml;
};

}  // namespace Dicapsule
