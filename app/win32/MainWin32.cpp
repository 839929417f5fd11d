// The Windows entry point: the command line arrives as UTF-16 and is handed to the tool as UTF-8,
// the narrow text of the whole program; paths built from narrow text read it as UTF-8 too.

#include "app/CommandLine.h"
#include "Portability/Misc/win32/DebugOutputTrace.h"
#include "Portability/Misc/win32/WideText.h"

#include <boost/filesystem/detail/utf8_codecvt_facet.hpp>
#include <boost/filesystem/path.hpp>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <locale>
#include <string>
#include <vector>

int wmain(int argc, wchar_t* argv[]) {
    // The bytes written are the bytes printed: no carriage return is added before each line feed,
    // so usage texts and the info document are the same bytes as on other platforms.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    // A console shows the UTF-8 output as characters; its own code page comes back at the end.
    const UINT consoleCodePage = ::GetConsoleOutputCP();
    if (consoleCodePage != 0) ::SetConsoleOutputCP(CP_UTF8);

    boost::filesystem::path::imbue(std::locale(std::locale(), new boost::filesystem::detail::utf8_codecvt_facet));
    Portability::InstallDebugOutputTraceSink();

    std::vector<std::string> arguments;
    arguments.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc; ++i) arguments.push_back(Portability::Utf8FromWide(argv[i]));
    std::vector<char*> narrow;
    for (std::string& argument : arguments) narrow.push_back(argument.data());
    narrow.push_back(nullptr);

    const int status = Dicapsule::Main(argc, narrow.data());
    std::fflush(nullptr);
    if (consoleCodePage != 0) ::SetConsoleOutputCP(consoleCodePage);
    // Every file is closed and every stream flushed. The process ends here without the static
    // destructors: OpenMP's idle workers are still parked in the runtime's pool, and tearing the
    // runtime down under them has crashed the process at exit (once, under wine, after a thumbnail).
    std::_Exit(status);
}
