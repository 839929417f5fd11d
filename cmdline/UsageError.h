#pragma once
// Usage errors: failures of the command line itself, reported with a usage text after the message.

#include <stdexcept>
#include <string>

namespace LibCommandLineOperation {

// Raised by option getters and validators with a message only; the operation runner turns it
// into the OperationUsageError of the operation being parsed.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace Detail {

// A usage error that knows which usage text to print after its message.
class UsageError2 : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~UsageError2() override = default;
    // The usage text to print after the message, for program name `prog`.
    virtual std::string usage(const std::string& prog) const = 0;
};

// A usage error of the command line as a whole: shows the general usage text of Operations.
template <class... Operations>
class GeneralUsageError : public UsageError2 {
public:
    using UsageError2::UsageError2;
    std::string usage(const std::string& prog) const override;
};

// A usage error of one operation: shows that operation's usage text.
template <class Operation>
class OperationUsageError : public UsageError2 {
public:
    using UsageError2::UsageError2;
    std::string usage(const std::string& prog) const override { return Operation::operation_usage(prog); }
};

// The general usage text: one line per operation, then where to find more.
template <class... Operations>
std::string general_usage(const std::string& prog) {
    std::string text = "Usage:\n";
    ((text += Operations::operation_line(prog)), ...);
    text += "\nFor more information concerning an operation, type:\n";
    text += "  " + prog + " OPERATION --help\n";
    return text;
}

template <class... Operations>
std::string GeneralUsageError<Operations...>::usage(const std::string& prog) const {
    return general_usage<Operations...>(prog);
}

}  // namespace Detail
}  // namespace LibCommandLineOperation
