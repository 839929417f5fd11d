#include "app/InfoDocument.h"
#include "app/InfoJson.h"
#include "app/Operations.h"
#include "app/Payload.h"
#include "app/QuotedPath.h"
#include "app/StreamArguments.h"

#include <cstdint>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace Dicapsule {

void info(const InfoRecord& record) {
    const std::string input = record.input.string();
    Portability::InputFile file;
    PayloadFacts facts;
    const PayloadReadResult result = OpenInput(record.input, file, UINT64_MAX) == Portability::InputFile::Status::opened
                                         ? read_payload(file.File(), false, facts)
                                         : PayloadReadResult::load_failed;
    switch (result) {
        case PayloadReadResult::success:
            break;
        case PayloadReadResult::load_failed:
            throw std::runtime_error("Could not load the input file " + QuotedPath(input) + ".");
        case PayloadReadResult::not_packed:
            throw std::runtime_error("The input file " + QuotedPath(input) +
                                     " misses Dicapsule custom data. It seems it hasn't been created by Dicapsule.");
        case PayloadReadResult::bad_reference_text:
            throw std::runtime_error("Could not parse one of the reference strings of the input file " +
                                     QuotedPath(input) + ".");
        case PayloadReadResult::name_too_long:
        case PayloadReadResult::command_line_too_long:
        case PayloadReadResult::references_too_long:
            throw std::runtime_error(StoredTextTooLongMessage(result, input));
        default:
            throw std::runtime_error("Could not get the info of the input file " + QuotedPath(input) + ".");
    }
    if (record.format == InfoFormat::json) {
        WriteInfoJson(std::cout, facts);
    } else {
        WriteInfoDocument(std::cout, facts);
    }
}

}  // namespace Dicapsule
