// dicom_tree_tool: reads and writes DICOM files with the codec so that scripts can compare it
// with other toolkits.
//   dicom_tree_tool dump FILE                     print the canonical text of the file's tree
//   dicom_tree_tool write OUTLINE OUT [ENCODING]     build a data set from a tree outline and write it
//   dicom_tree_tool copy IN OUT [ENCODING]        read a file and write it again
// ENCODING is "implicit", "explicit" or "big"; without it the file's (0002,0010) decides. With
// it, a meta group's (0002,0010) is changed to name the encoding written.

#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "CanonicalText.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileDataStream.h"
#include "Portability/Misc/DebugTrace.h"
#include "TreeOutline.h"

namespace {

using namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule;

struct EncodingName {
    std::string_view word;
    StreamEncoding encoding;
    std::string_view transferSyntax;
};

constexpr EncodingName kEncodings[] = {
    {"implicit", StreamEncoding::ImplicitLittleEndian, "1.2.840.10008.1.2"},
    {"explicit", StreamEncoding::ExplicitLittleEndian, "1.2.840.10008.1.2.1"},
    {"big", StreamEncoding::ExplicitBigEndian, "1.2.840.10008.1.2.2"},
};

const EncodingName* FindEncoding(std::string_view word) {
    for (const EncodingName& name : kEncodings) {
        if (name.word == word) return &name;
    }
    return nullptr;
}

int Usage() {
    std::cerr << "usage: dicom_tree_tool dump FILE\n"
                 "       dicom_tree_tool write OUTLINE OUT [implicit|explicit|big]\n"
                 "       dicom_tree_tool copy IN OUT [implicit|explicit|big]\n";
    return 2;
}

int Dump(const char* path) {
    DicomDataSet dataSet;
    if (!ReadDicomFile(path, dataSet)) {
        std::cerr << "cannot read " << path << "\n";
        return 1;
    }
    std::cout << DicomInterop::CanonicalText(dataSet);
    return 0;
}

int Write(const DicomDataSet& dataSet, const char* path, const EncodingName* encoding) {
    const bool written = encoding ? WriteDicomFile(path, dataSet, encoding->encoding) : WriteDicomFile(path, dataSet);
    if (!written) std::cerr << "cannot write " << path << "\n";
    return written ? 0 : 1;
}

// A data set with a meta group says in (0002,0010) how its data set is encoded; keep that true.
void NameEncoding(DicomDataSet& dataSet, const EncodingName* encoding) {
    if (!encoding || dataSet.Count() == 0 || dataSet.begin()->second->group != 0x0002) return;
    const std::string_view uid = encoding->transferSyntax;
    dataSet.Insert(std::make_unique<DicomDataSetElement>(0x0002, 0x0010, VR::UI,
                                                         std::vector<std::uint8_t>(uid.begin(), uid.end())));
}

int Main(int argc, char** argv) {
    if (argc < 3) return Usage();
    const std::string_view command = argv[1];
    if (command == "dump" && argc == 3) return Dump(argv[2]);
    if ((command != "write" && command != "copy") || argc < 4 || argc > 5) return Usage();
    const EncodingName* encoding = argc == 5 ? FindEncoding(argv[4]) : nullptr;
    if (argc == 5 && !encoding) return Usage();
    DicomDataSet dataSet;
    if (command == "copy") {
        if (!ReadDicomFile(argv[2], dataSet)) {
            std::cerr << "cannot read " << argv[2] << "\n";
            return 1;
        }
    } else {
        std::ifstream outline(argv[2], std::ios::binary);
        std::stringstream text;
        text << outline.rdbuf();
        std::string error;
        if (!outline || !DicomInterop::ParseTreeOutline(text.str(), dataSet, error)) {
            std::cerr << argv[2] << ": " << (error.empty() ? "cannot read" : error) << "\n";
            return 1;
        }
    }
    NameEncoding(dataSet, encoding);
    return Write(dataSet, argv[3], encoding);
}

}  // namespace

int main(int argc, char** argv) {
    // The codec's diagnostics (odd lengths, where a read stopped) help explain a failing comparison.
    Portability::SetTraceSink([](const Portability::TraceLine& line) {
        std::cerr << "trace: " << line.module << ": " << line.text << "\n";
    });
    return Main(argc, argv);
}
