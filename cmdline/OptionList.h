#pragma once
// Option descriptions shared between operations, and the option list an operation parses with.

#include <boost/program_options/options_description.hpp>

#include <boost/shared_ptr.hpp>
#include <boost/make_shared.hpp>
#include <vector>

namespace LibCommon {

using OptionDescription = boost::shared_ptr<boost::program_options::option_description>;
// Options declared together and reused by every operation that needs them.
using OptionGroup = std::vector<OptionDescription>;

// The operation's option list: the groups' descriptions sorted by displayed name ("-o [ --output ]")
// without regard to case (ties keep declaration order), captioned "Options", 80 columns wide with
// the description column at most at column 40.
boost::program_options::options_description MakeOptionList(const std::vector<OptionGroup>& groups);

}  // namespace LibCommon
