#include "app/PackParts.h"

#include "app/BackgroundDigests.h"
#include "app/OperationMessages.h"
#include "app/Payload.h"
#include "app/QuotedPath.h"
#include "Foundations/DataModule/Uid/UIDGenerator.h"
#include "Portability/Misc/AtomicFileWriter.h"

#include <boost/filesystem/operations.hpp>

#include <memory>
#include <stdexcept>
#include <string>

namespace Dicapsule {

namespace {

namespace fs = boost::filesystem;

// True when something already answers to path (a dangling symbolic link included); what is
// written through (a device, a FIFO) does not count.
bool Taken(const std::string& path) {
    if (Portability::IsWrittenThrough(path)) return false;
    boost::system::error_code error;
    const fs::file_type type = fs::symlink_status(path, error).type();
    return type != fs::status_unknown && type != fs::file_not_found;
}

// Remove the parts already named when a later one cannot be: a set is written whole or not at all.
void RemoveNamed(const std::vector<std::string>& names, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        boost::system::error_code error;
        fs::remove(names[i], error);
    }
}

}  // namespace

void PackParts(const PackRecord& record, ConversionRequest request, const std::vector<PayloadPart>& plan,
               const Portability::InputFile& input) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        names.push_back(PartFileName(record.output.string(), static_cast<unsigned>(i + 1)));
        if (!record.force && Taken(names.back())) throw std::runtime_error(AlreadyExists(names.back()));
    }
    const Lumivale::DataModule::ByteBuffer whole = request.content;
    // The whole payload's digest, taken from the input while the parts are written and hashed.
    std::unique_ptr<BackgroundDigests> wholeDigest;
    if (request.digest) wholeDigest = std::make_unique<BackgroundDigests>(std::vector{whole});

    PartFacts part;
    part.count = static_cast<unsigned>(plan.size());
    part.total_size = input.Size();
    part.set_uid = Lumivale::DataModule::GenerateUid(Lumivale::DataModule::UidKind::PayloadSet);
    const std::int32_t firstNumber = request.identifier.instance_number;
    std::vector<std::unique_ptr<PendingInstance>> pending;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        part.index = static_cast<unsigned>(i + 1);
        part.offset = plan[i].offset;
        request.part = part;
        request.content = Lumivale::DataModule::ByteBuffer::OfFileRegion({input.File(), plan[i].offset, plan[i].length});
        request.output = names[i];
        if (i > 0) {
            // The series of the first part, whatever gave its identifiers; each part is an instance of its own.
            request.identifier.study_instance_uid = pending.front()->study_instance_uid;
            request.identifier.series_instance_uid = pending.front()->series_instance_uid;
            request.identifier.sop_instance_uid.reset();
            request.identifier.instance_number = firstNumber + static_cast<std::int32_t>(i);
        }
        pending.push_back(std::make_unique<PendingInstance>());
        const ConversionResult result = convert(request, *pending.back());
        if (result == ConversionResult::output_not_written && !input.File()->Unchanged()) {
            throw std::runtime_error(InputChanged(record.input.string()));
        }
        if (result != ConversionResult::written) throw std::runtime_error(ConversionFailure(result, request));
    }
    if (wholeDigest) {
        if (!wholeDigest->Wait()) throw std::runtime_error(InputUnreadable(record.input.string()));
        if (!input.File()->Unchanged()) throw std::runtime_error(InputChanged(record.input.string()));
        const std::string& hex = wholeDigest->Digests().front();
        for (std::size_t i = 0; i < pending.size(); ++i) {
            const std::vector<std::uint64_t>& at = pending[i]->file.FilledLaterOffsets();
            if (at.size() != 1 || !pending[i]->file.WriteAt(at.front(), hex.data(), hex.size())) {
                request.output = names[i];
                throw std::runtime_error(ConversionFailure(ConversionResult::output_not_written, request));
            }
        }
    }
    for (std::size_t i = 0; i < pending.size(); ++i) {
        if (pending[i]->file.Commit()) continue;
        RemoveNamed(names, i);
        if (!record.force && Taken(names[i])) throw std::runtime_error(AlreadyExists(names[i]));
        request.output = names[i];
        throw std::runtime_error(ConversionFailure(ConversionResult::output_not_written, request));
    }
}

}  // namespace Dicapsule
