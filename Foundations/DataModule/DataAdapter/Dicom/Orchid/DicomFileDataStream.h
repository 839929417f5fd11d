#pragma once
// A DicomDataStream over a file. Reading keeps large values in the file; writing goes to a
// temporary file beside the target that replaces the target only when the write succeeded.

#include <filesystem>
#include <optional>
#include <memory>
#include <vector>

#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomDataStream.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/DicomFileLayout.h"
#include "Foundations/DataModule/DataAdapter/Dicom/Orchid/Inflate.h"
#include "Portability/Misc/AtomicFileWriter.h"

namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule {

// File source or sink; owns the file handle.
class DicomFileDataStream : public DicomDataStream {
public:
    DicomFileDataStream() = default;
    ~DicomFileDataStream() override;

    // Open a file for reading; false when it cannot be opened.
    bool OpenForReading(const std::filesystem::path& path);
    // Read a file that is already open.
    void OpenForReading(std::shared_ptr<const Portability::OpenFile> file);
    // Start writing path: bytes go to a temporary file in the same directory until Commit, which
    // replaces or refuses an existing file as told.
    bool OpenForWriting(const std::filesystem::path& path,
                        Portability::ExistingTarget existing = Portability::ExistingTarget::replace);
    // Overwrite bytes already written (a value filled later); false when they were not written.
    bool WriteAt(std::uint64_t offset, const void* data, std::size_t size);
    // Finish writing: flush, close and rename the temporary file onto the target.
    bool Commit();
    // Stop: a write that was not committed is discarded and its temporary file removed.
    void Close() override;

    // Read the preamble and meta group, leaving the stream at the data set.
    bool ReadFileHeader(CallbackHandler& handler) { return DicomCodecModule::ReadFileHeader(*this, handler); }
    // Write the preamble, "DICM" and the meta group of dataSet (when it has one).
    bool WriteFileHeader(const DicomDataSet& dataSet) { return DicomCodecModule::WriteFileHeader(*this, dataSet); }

    bool SetPosition(std::uint64_t position) override;
    bool Skip(std::uint64_t count) override;
    bool WriteRaw(const void* data, std::uint64_t size) override;
    bool ReadRaw(void* data, std::uint64_t size) override;
    bool AtEnd() const override;
    std::uint64_t Position() const override { return position_; }
    std::uint64_t Size() const override;
    std::shared_ptr<const Portability::OpenFile> ValueSource() const override { return source_; }
    std::optional<std::uint64_t> ValueDeflatedFrom() const override;
    bool WriteRegion(const FileRegion& region, Portability::Sha256* digest) override;
    // Reads on from the inflation of the remainder, pulled while reading: nothing is inflated
    // ahead and no temporary file is made. Values left in the file are regions of the inflation,
    // inflated again from the file when they are wanted. Only forward moves are possible then
    // (and steps back within the last bytes read).
    bool InflateRemainder() override;

private:
    bool Flush();
    bool Refill();
    bool RefillInflated() const;

    std::shared_ptr<const Portability::OpenFile> source_;  // reading
    // Read-ahead or pending writes; the read-ahead is a cache, filled also by AtEnd when inflating.
    mutable std::vector<std::uint8_t> buffer_;
    mutable std::uint64_t bufferStart_ = 0;       // stream offset of buffer_[0] when reading
    std::uint64_t position_ = 0;
    std::optional<Portability::AtomicFileWriter> writer_;  // writing
    std::unique_ptr<InflateReader> inflater_;               // reading an inflated data set
    std::uint64_t deflatedFrom_ = 0;                        // where its deflate data begin in source_
};

// Read a DICOM file into dataSet (which is cleared first); on failure, says why and where.
DicomReadResult ReadDicomFile(const std::filesystem::path& path, DicomDataSet& dataSet, const DicomReadOptions& options = {});
// The same for a file already open (values left in it keep it open).
DicomReadResult ReadDicomFile(std::shared_ptr<const Portability::OpenFile> file, DicomDataSet& dataSet,
                              const DicomReadOptions& options = {});
// Write dataSet as a DICOM file in the given data set encoding, taking path only on success (and,
// with ExistingTarget::refuse, only when nothing is there by then).
bool WriteDicomFile(const std::filesystem::path& path, const DicomDataSet& dataSet, StreamEncoding encoding,
                    Portability::ExistingTarget existing = Portability::ExistingTarget::replace);
// Write dataSet as WriteDicomFile does into stream, without committing it: the values marked to be
// filled later are then overwritten (FilledLaterOffsets, WriteAt) and the stream committed, or it
// is dropped and leaves nothing.
bool WriteDicomFileUncommitted(const std::filesystem::path& path, const DicomDataSet& dataSet, StreamEncoding encoding,
                               Portability::ExistingTarget existing, DicomFileDataStream& stream);
// Write dataSet in the encoding its (0002,0010) names (explicit VR little endian without one).
bool WriteDicomFile(const std::filesystem::path& path, const DicomDataSet& dataSet);

}  // namespace Lumivale::DataModule::DataAdapterModule::DicomCodecModule
