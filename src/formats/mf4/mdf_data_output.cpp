#include "formats/mf4/mdf_data_output.hpp"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>

#include "formats/mf4/block_data.hpp"
#include "util/failures.hpp"

namespace xlatr {

// zlib's stream at its default level. What it makes does not depend on the pieces in which it gets the data.
class MdfDataOutput::Deflater {
 public:
  Deflater() {
    if (deflateInit(&stream_, Z_DEFAULT_COMPRESSION) != Z_OK) {
      throwProcessingFailure(kDeflateFailure);
    }
  }
  ~Deflater() { deflateEnd(&stream_); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  // Hands what is ready to `take`; after the last bytes that is all there is.
  template <class Take>
  void deflateTo(Take&& take, std::string_view bytes, bool last) {
    do {
      const std::size_t piece = std::min<std::size_t>(bytes.size(), std::numeric_limits<uInt>::max());
      feed(take, bytes.substr(0, piece), last && piece == bytes.size() ? Z_FINISH : Z_NO_FLUSH);
      bytes.remove_prefix(piece);
    } while (!bytes.empty());
  }

 private:
  template <class Take>
  void feed(Take& take, std::string_view bytes, int flush) {
    // zlib only reads the input, but says so only where ZLIB_CONST is defined for all of its users.
    stream_.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(bytes.data()));
    stream_.avail_in = static_cast<uInt>(bytes.size());
    do {
      stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
      stream_.avail_out = static_cast<uInt>(buffer_.size());
      if (deflate(&stream_, flush) == Z_STREAM_ERROR) {
        throwProcessingFailure(kDeflateFailure);
      }
      take(std::string_view(buffer_.data(), buffer_.size() - stream_.avail_out));
    } while (stream_.avail_out == 0);
  }

  z_stream stream_ = {};
  std::array<char, std::size_t{64}* 1024> buffer_ = {};
};

MdfDataOutput::MdfDataOutput(BufferedOutput& output, std::uint64_t position, bool zipped)
    : output_(output), position_(position), dataPosition_(position) {
  if (zipped) {
    deflater_ = std::make_unique<Deflater>();
  }
}

MdfDataOutput::~MdfDataOutput() = default;

void MdfDataOutput::append(std::string_view records) {
  if (records.empty()) {
    return;
  }
  begin();
  recordBytes_ += records.size();
  if (deflater_) {
    deflater_->deflateTo([this](std::string_view bytes) { write(bytes); }, records, false);
  } else {
    write(records);
  }
}

// Until the block is finished the file has the head of an empty one.
void MdfDataOutput::begin() {
  if (dataPosition_ == position_) {
    dataPosition_ += kHeaderSectionSize + (deflater_ ? kLayoutSize<DataZippedBlockData> : 0);
    writeHead();
  }
}

std::uint64_t MdfDataOutput::finish() {
  if (deflater_) {
    if (recordBytes_ == 0) {
      return 0;
    }
    deflater_->deflateTo([this](std::string_view bytes) { write(bytes); }, {}, true);
  }
  begin();
  output_.seek(position_);
  writeHead();
  output_.seek(end());
  return position_;
}

void MdfDataOutput::write(std::string_view bytes) {
  output_.write(bytes);
  writtenBytes_ += bytes.size();
}

void MdfDataOutput::writeHead() {
  HeaderSection head;
  HeaderSection::setType(head, deflater_ ? BlockTypeId::DZ : BlockTypeId::DT);
  head.length = end() - position_;
  Bytes bytes;
  appendFields(bytes, head);
  if (deflater_) {
    DataZippedBlockData data;
    data.dzOrgDataLength = recordBytes_;
    data.dzDataLength = writtenBytes_;
    appendFields(bytes, data);
  }
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

}  // namespace xlatr
