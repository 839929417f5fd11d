#include "app/UnpackOutputName.h"

#include "app/OperationMessages.h"

#include <stdexcept>

namespace Dicapsule {

namespace {

// The name without its last extension; a leading dot starts the name rather than an extension.
std::string Stem(const std::string& name) {
    const std::size_t dot = name.rfind('.');
    return (dot == std::string::npos || dot == 0) ? name : name.substr(0, dot);
}

// The last "." suffix of the name's last component (after any "/" or "\\", whichever system wrote
// it), with its dot, or nothing.
std::string LastExtension(const std::string& name) {
    const std::size_t separator = name.find_last_of("/\\");
    const std::string last = separator == std::string::npos ? name : name.substr(separator + 1);
    const std::size_t dot = last.rfind('.');
    return dot == std::string::npos ? std::string() : last.substr(dot);
}

}  // namespace

bool IsPlainFileName(std::string_view name) {
    if (name.empty() || name == "." || name == "..") return false;
    return name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

boost::filesystem::path ResolveUnpackOutput(const std::variant<OutputFile, OutputDirectory>& target,
                                            const boost::filesystem::path& input, const std::string& original_name) {
    if (const auto* file = std::get_if<OutputFile>(&target)) return file->path;
    const auto& directory = std::get<OutputDirectory>(target);
    if (directory.use_original_name) {
        if (!IsPlainFileName(original_name)) {
            throw std::runtime_error(StoredNameNotPlain(original_name, input.string()));
        }
        return directory.path / original_name;
    }
    // Only the stored name's extension is used; the derived name is checked as a whole, since the
    // input's own name can make one that leaves the directory too ("..." gives "..").
    const std::string derived = Stem(input.filename().string()) + LastExtension(original_name);
    if (!IsPlainFileName(derived)) {
        throw std::runtime_error(DerivedNameNotPlain(derived, input.string()));
    }
    return directory.path / derived;
}

}  // namespace Dicapsule
