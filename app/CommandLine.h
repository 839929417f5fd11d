#pragma once
// The entry logic of the tool, apart from printing: help words, operation dispatch, usage errors.

#include <exception>
#include <ostream>
#include <string>

namespace Dicapsule {

// Answer help, or hand the command line to the operation that claims it. Throws a usage error
// (general or operation) or the operation's own error; returns normally on success.
void RunCommandLine(int argc, const char* const argv[]);

// Write the report of a failure to err: a usage error with the usage text it names for prog, any
// other exception with "Error: ", anything else as "Unknown error."; returns the exit status, 1.
int ReportFailure(std::exception_ptr failure, const std::string& prog, std::ostream& err);

// Run the command line and report any failure on standard error; returns the exit status (0 or 1).
int Main(int argc, const char* const argv[]);

}  // namespace Dicapsule
