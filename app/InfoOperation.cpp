#include "app/InfoDocument.h"
#include "app/OperationMessages.h"
#include "app/Operations.h"
#include "app/Payload.h"

#include <iostream>
#include <sstream>
#include <stdexcept>

namespace Dicapsule {

void info(const InfoRecord& record) {
    const std::string input = record.input.string();
    PayloadFacts facts;
    const PayloadReadResult result = read_payload(input, false, facts);
    if (result != PayloadReadResult::success) throw std::runtime_error(PayloadReadFailure(result, input, PayloadReader::info));
    WriteInfoDocument(std::cout, facts.name, facts.command_line, facts.references);
}

}  // namespace Dicapsule
