// Replays fuzz inputs without libFuzzer: each argument is a file or a directory of files, and every
// file is handed once to the target. Used by ctest to keep the corpus and past findings as tests,
// so a replay that checks nothing must not pass: a path that does not exist, a file that cannot be
// read, or a run that found no input at all ends with status 1.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return false;
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad()) return false;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char* argv[]) {
    std::size_t count = 0;
    bool failed = false;
    const auto replay = [&](const std::filesystem::path& file) {
        if (Replay(file)) {
            ++count;
        } else {
            std::cerr << "cannot read " << file << '\n';
            failed = true;
        }
    };
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path = argv[i];
        std::error_code error;
        if (std::filesystem::is_directory(path, error)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
                if (entry.is_regular_file()) replay(entry.path());
            }
        } else if (std::filesystem::is_regular_file(path, error)) {
            replay(path);
        } else {
            std::cerr << "no input at " << path << '\n';
            failed = true;
        }
    }
    std::cout << "replayed " << count << " inputs\n";
    if (count == 0) std::cerr << "nothing was replayed\n";
    return failed || count == 0 ? 1 : 0;
}
