// dicom_tree_tool: reads and writes DICOM files with the codec so that scripts can compare it
// with other toolkits.
//   dicom_tree_tool dump FILE                 print the canonical text of the file's tree
//   dicom_tree_tool copy IN OUT ENCODING      read a file and write it again
// ENCODING is "implicit", "explicit" or "big"; a meta group's (0002,0010) is changed to name it.

#include <iostream>
#include <string_view>

#include "CanonicalText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Portability/Misc/DebugTrace.h"

namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

struct EncodingName { std::string_view word; StreamEncoding encoding; std::string_view transferSyntax; };

constexpr EncodingName kEncodings[] = {
    {"implicit", StreamEncoding::ImplicitLittleEndian, "1.2.840.10008.1.2"},
    {"explicit", StreamEncoding::ExplicitLittleEndian, "1.2.840.10008.1.2.1"},
    {"big", StreamEncoding::ExplicitBigEndian, "1.2.840.10008.1.2.2"},
};

int Main(int argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    const EncodingName* encoding = nullptr;
    for (const EncodingName& name : kEncodings) encoding = argc == 5 && name.word == argv[4] ? &name : encoding;
    if (!(command == "dump" && argc == 3) && !(command == "copy" && encoding)) {
        std::cerr << "usage: dicom_tree_tool dump FILE\n"
                     "       dicom_tree_tool copy IN OUT implicit|explicit|big\n";
        return 2;
    }
    DicomDataSet dataSet;
    if (!ReadDicomFile(argv[2], dataSet)) {
        std::cerr << "cannot read " << argv[2] << "\n";
        return 1;
    }
    if (command == "dump") {
        std::cout << DicomInterop::CanonicalText(dataSet);
        return 0;
    }
    // A data set with a meta group says in (0002,0010) how its data set is encoded; keep that true.
    if (dataSet.Count() != 0 && dataSet.begin()->second->tag.group == 0x0002) {
        const std::string_view uid = encoding->transferSyntax;
        dataSet.Insert(std::make_unique<DicomDataSetElement>(Tag{0x0002, 0x0010}, VR::UI,
                                                             std::vector<std::uint8_t>(uid.begin(), uid.end())));
    }
    if (WriteDicomFile(argv[3], dataSet, encoding->encoding)) return 0;
    std::cerr << "cannot write " << argv[3] << "\n";
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    // The codec's diagnostics (odd lengths, where a read stopped) help explain a failing comparison.
    Portability::SetTraceSink([](const Portability::TraceLine& line) {
        std::cerr << "trace: " << line.module << ": " << line.text << "\n";
    });
    return Main(argc, argv);
}
