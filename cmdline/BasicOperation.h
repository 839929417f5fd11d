#pragma once
// One command-line operation, parameterised by a policy that supplies its name, synopsis,
// options, record builder and body.
//
// A Policy provides:
//   static constexpr const char* kName;        the operation word ("pack")
//   static constexpr const char* kSynopsis;    e.g. "-i INPUT_FILE [OPTION]..."
//   using Record = ...;                        the option record the body reads
//   static std::vector<LibCommon::OptionGroup> describe();
//   static Record make_record(const boost::program_options::variables_map&);  checks, in order
//   static void execute(int argc, const char* const argv[], const Record&);  the body

#include "cmdline/HelpWords.h"
#include "cmdline/OptionList.h"
#include "cmdline/ProgramName.h"
#include "cmdline/UsageError.h"

#include <boost/program_options/parsers.hpp>
#include <boost/program_options/variables_map.hpp>

#include <iostream>
#include <sstream>
#include <string>

namespace LibCommon {

template <class Policy>
class BasicOperation {
public:
    using Record = typename Policy::Record;

    static const std::string& name() {
        static const std::string text = Policy::kName;
        return text;
    }

    static const std::string& synopsis() {
        static const std::string text = Policy::kSynopsis;
        return text;
    }

    // The operation's options, sorted and formatted as the usage text shows them.
    static const boost::program_options::options_description& options() {
        static const boost::program_options::options_description list = MakeOptionList(Policy::describe());
        return list;
    }

    // "  PROG name synopsis\n": the operation's line in both usage texts.
    static std::string operation_line(const std::string& prog) {
        return "  " + prog + " " + name() + " " + synopsis() + "\n";
    }

    static std::string operation_usage(const std::string& prog) {
        std::ostringstream text;
        text << "Usage:\n" << operation_line(prog) << "\n" << options();
        return text.str();
    }

    // Parse the whole argument vector (words that are not options are ignored) and build the record.
    static Record parse(int argc, const char* const argv[]) {
        boost::program_options::variables_map values;
        boost::program_options::store(boost::program_options::parse_command_line(argc, argv, options()), values);
        boost::program_options::notify(values);
        return Policy::make_record(values);
    }

    // Claim the command line when argv[1] names this operation: print help, or parse and execute.
    static void run(int argc, const char* const argv[], bool& found) {
        if (found || argc < 2 || name() != argv[1]) return;
        found = true;
        if (argc >= 3 && IsHelpWord(argv[2])) {
            std::cout << operation_usage(ProgramName(argv[0]));
            return;
        }
        try {
            const Record record = parse(argc, argv);
            Policy::execute(argc, argv, record);
        } catch (const LibCommandLineOperation::UsageError& error) {
            throw LibCommandLineOperation::Detail::OperationUsageError<BasicOperation>(error.what());
        }
    }
};

}  // namespace LibCommon
