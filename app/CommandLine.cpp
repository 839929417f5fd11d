#include "app/CommandLine.h"

#include "app/OperationMessages.h"
#include "app/OperationPolicies.h"
#include "app/Version.h"
#include "cmdline/HelpWords.h"
#include "cmdline/ProgramName.h"
#include "cmdline/UsageError.h"
#include "Portability/Misc/DebugTrace.h"

#include <exception>
#include <iostream>
#include <string>
#include <string_view>

namespace Dicapsule {

namespace {
using GeneralUsageError =
    LibCommandLineOperation::Detail::GeneralUsageError<PackOperation, InfoOperation, UnpackOperation>;
}  // namespace

void RunCommandLine(int argc, const char* const argv[]) {
    if (argc < 2) throw GeneralUsageError(OperationMissing());
    if (std::string_view(argv[1]) == "--version") {
        std::cout << "dicapsule " << kProductVersion << "\n";
        return;
    }
    if (LibCommon::IsHelpWord(argv[1])) {
        std::cout << LibCommandLineOperation::Detail::general_usage<PackOperation, InfoOperation, UnpackOperation>(
            LibCommon::ProgramName(argv[0]));
        return;
    }
    bool found = false;
    PackOperation::run(argc, argv, found);
    InfoOperation::run(argc, argv, found);
    UnpackOperation::run(argc, argv, found);
    if (!found) throw GeneralUsageError(NotValid(argv[1], "operation"));
}

int ReportFailure(std::exception_ptr failure, const std::string& prog, std::ostream& err) {
    try {
        std::rethrow_exception(failure);
    } catch (const LibCommandLineOperation::Detail::UsageError2& error) {
        err << "Usage error: " << error.what() << "\n\n" << error.usage(prog) << std::flush;
    } catch (const std::exception& error) {
        err << "Error: " << error.what() << std::endl;
    } catch (...) {
        err << "Unknown error." << std::endl;
    }
    return 1;
}

int Main(int argc, const char* const argv[]) {
    const std::string prog = LibCommon::ProgramName(argc > 0 ? argv[0] : nullptr);
    // The debug trace says why a file or a document was refused; users reach it on request.
    Portability::InstallTraceSinkFromEnvironment();
    try {
        RunCommandLine(argc, argv);
        std::cout.flush();
        if (!std::cout) throw std::runtime_error(StandardOutputFailure());
        return 0;
    } catch (...) {
        return ReportFailure(std::current_exception(), prog, std::cerr);
    }
}

}  // namespace Dicapsule
