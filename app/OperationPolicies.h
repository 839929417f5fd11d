#pragma once
// The three operations of the tool: their names, synopses, options, record builders and bodies.

#include "app/OptionRecords.h"
#include "cmdline/BasicOperation.h"
#include "cmdline/OptionList.h"

#include <boost/program_options/variables_map.hpp>

#include <vector>

namespace Dicapsule {

struct PackOperationPolicy {
    static constexpr const char* kName = "pack";
    static constexpr const char* kSynopsis = "-i INPUT_FILE -m METADATA [OPTION]...";
    using Record = PackRecord;
    static std::vector<LibCommon::OptionGroup> describe();
    static Record make_record(const boost::program_options::variables_map& values);
    static void execute(int argc, const char* const argv[], const Record& record);
};

struct InfoOperationPolicy {
    static constexpr const char* kName = "info";
    static constexpr const char* kSynopsis = "-i INPUT_FILE [OPTION]...";
    using Record = InfoRecord;
    static std::vector<LibCommon::OptionGroup> describe();
    static Record make_record(const boost::program_options::variables_map& values);
    static void execute(int argc, const char* const argv[], const Record& record);
};

struct UnpackOperationPolicy {
    static constexpr const char* kName = "unpack";
    static constexpr const char* kSynopsis = "-i INPUT_FILE [OPTION]...";
    using Record = UnpackRecord;
    static std::vector<LibCommon::OptionGroup> describe();
    static Record make_record(const boost::program_options::variables_map& values);
    static void execute(int argc, const char* const argv[], const Record& record);
};

using PackOperation = LibCommon::BasicOperation<PackOperationPolicy>;
using InfoOperation = LibCommon::BasicOperation<InfoOperationPolicy>;
using UnpackOperation = LibCommon::BasicOperation<UnpackOperationPolicy>;

}  // namespace Dicapsule
