#include "app/InfoDocument.h"
#include "app/InfoJson.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/Payload.h"
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
    if (result != PayloadReadResult::success) throw std::runtime_error(PayloadReadFailure(result, input, PayloadReader::info));
    if (record.format == InfoFormat::json) {
        WriteInfoJson(std::cout, facts);
    } else {
        WriteInfoDocument(std::cout, facts);
    }
}

}  // namespace Dicapsule
