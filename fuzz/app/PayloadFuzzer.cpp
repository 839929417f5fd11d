// Reads arbitrary bytes as a packed file through the payload reader, with and without the content
// (unpack and info). The two reads must agree on the name, command line and references, and a
// payload that was read must survive read -> write -> read: stored again into a custom data
// sequence and read back, it gives the same facts and the same content bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/Payload.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Adapter/CustomDataSequence.h"
#include "fuzz/FuzzInputFile.h"

namespace {

namespace adapter = Lumivale::DataModule::DataAdapterModule;

void RequireStableRoundTrip(const Dicapsule::PayloadFacts& read) {
    // A document of another writer stores no name, which a raw payload must have.
    if (read.name.empty()) return;
    Lumivale::DataModule::CustomDataStore store;
    Dicapsule::store_payload(store, read.content, read.name, read.command_line, read.references, false);
    adapter::DicomCodecModule::DicomDataSet dataSet;
    if (!adapter::InsertCustomData(dataSet, store)) std::abort();
    Lumivale::DataModule::CustomDataStore reread;
    Dicapsule::PayloadFacts again;
    if (!adapter::ReadCustomData(dataSet, {}, reread) ||
        Dicapsule::ExtractPayload(reread, true, again) != Dicapsule::PayloadReadResult::success) {
        std::abort();
    }
    // Contents compared by digest: a region of a deflated file is read by inflating it again.
    std::string before;
    std::string after;
    if (again.name != read.name || again.command_line != read.command_line || again.references != read.references ||
        !Dicapsule::ContentSha256(read.content, before) || !Dicapsule::ContentSha256(again.content, after) ||
        before != after) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const DicapsuleFuzz::FuzzInputFile input(data, size, "payload", ".dcm");
    Dicapsule::PayloadFacts withContent;
    Dicapsule::PayloadFacts withoutContent;
    const auto unpacked = Dicapsule::read_payload(input.Path(), true, withContent);
    const auto described = Dicapsule::read_payload(input.Path(), false, withoutContent);
    if (unpacked == Dicapsule::PayloadReadResult::success && described == Dicapsule::PayloadReadResult::success &&
        (withContent.name != withoutContent.name || withContent.command_line != withoutContent.command_line ||
         withContent.references != withoutContent.references)) {
        std::abort();
    }
    if (unpacked == Dicapsule::PayloadReadResult::success) RequireStableRoundTrip(withContent);
    return 0;
}
