#include "cmdline/OptionList.h"
#include "cmdline/ProgramName.h"

#include <boost/make_shared.hpp>
#include <boost/program_options/value_semantic.hpp>

#include <gtest/gtest.h>

namespace {

namespace po = boost::program_options;

TEST(ProgramName, LastComponentWithEitherSeparator) {
    const std::pair<const char*, const char*> cases[] = {
        {"dicapsule", "dicapsule"},
        {"C:\\mixed/dir\\dicapsule.exe", "dicapsule.exe"},
        {"/usr/bin/", ""},
    };
    for (const auto& [argv0, expected] : cases) EXPECT_EQ(LibCommon::ProgramName(argv0), expected) << argv0;
    EXPECT_EQ(LibCommon::ProgramName(nullptr), "");
}

TEST(OptionList, SortedByDisplayedNameIgnoringCaseWithStableTies) {
    const auto text = [](const char* names) {
        return boost::make_shared<po::option_description>(names, po::value<std::string>(), "x");
    };
    const auto flag = [](const char* names) { return boost::make_shared<po::option_description>(names, po::bool_switch(), "x"); };
    const LibCommon::OptionGroup first{text("output,o"), text("Output,O")};
    const LibCommon::OptionGroup second{text("input,i"), flag("hackforbmpacs"), text("Identifier,I"), text("Modality,M"),
                                        text("metadata,m")};
    const po::options_description list = LibCommon::MakeOptionList({first, second});

    std::vector<std::string> order;
    for (const auto& option : list.options()) order.push_back(option->long_name());
    EXPECT_EQ(order, (std::vector<std::string>{"hackforbmpacs", "Identifier", "input", "metadata", "Modality", "output",
                                               "Output"}));
}

}  // namespace
