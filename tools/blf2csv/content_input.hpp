// From the file to the joined content of its containers.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "blf2csv/byte_queue.hpp"
#include "blf2csv/file_header.hpp"
#include "blf2csv/object_scanner.hpp"
#include "blf2csv/remarks.hpp"
#include "platform/files.hpp"

namespace blf2csv {

// What a step of ContentInput has come upon.
enum class Piece : std::uint8_t {
  More,  // the content goes on
  Hole,  // bytes are missing: what comes next does not continue what came before
  End,   // there is no more
};

// Walks over the objects of the file. The contents of containers, inflated, and the objects that lie outside of any
// container follow one another as one run of bytes, in which objects begin and end anywhere. Every size in the file is
// held against what is really there; a damaged container leaves a hole. Memory is constant. One thread at a time.
class ContentInput {
 public:
  // Opens the file. Throws std::ios_base::failure when it can't be read and std::runtime_error when it is no BLF log.
  // `remarks` must outlive this object.
  ContentInput(const std::string& path, Remarks& remarks);
  ~ContentInput();
  ContentInput(const ContentInput&) = delete;
  ContentInput& operator=(const ContentInput&) = delete;

  [[nodiscard]] const FileHeader& header() const { return header_; }

  // Takes one step, which does a limited amount of work and appends a limited number of bytes, or none, to `content`.
  // Throws std::ios_base::failure when reading fails.
  [[nodiscard]] Piece read(ByteQueue& content);

  // How much of the file is done, in hundredths of a per cent.
  [[nodiscard]] std::uint16_t progress() const;

 private:
  enum class State : std::uint8_t {
    BetweenObjects,
    Copying,    // `left_` bytes of a stored container or of an object outside of containers
    Inflating,  // `left_` packed bytes of a container
    Skipping,   // `left_` bytes of a container that can't be unpacked
  };
  class Inflater;

  [[nodiscard]] Piece findObject();
  void beginContainer(std::uint64_t size);
  void beginContent(std::uint32_t method);
  [[nodiscard]] Piece copy(ByteQueue& content);
  [[nodiscard]] Piece inflate(ByteQueue& content);
  [[nodiscard]] Piece skip();
  // How many bytes of the container or the object are in `input_`, which is filled when it is empty.
  [[nodiscard]] std::size_t available();
  void take(std::size_t count);
  void fill();

  Remarks& remarks_;
  xlatr::platform::File file_;
  std::uint64_t fileSize_;
  FileHeader header_;
  ByteQueue input_;
  bool atEnd_ = false;  // all of the file is in `input_` or was
  ObjectScanner scanner_;
  State state_ = State::BetweenObjects;
  std::uint64_t left_ = 0;
  std::uint64_t containerOffset_ = 0;
  std::uint64_t statedContent_ = 0;  // what the container says
  std::uint64_t content_ = 0;        // what it has given so far
  std::unique_ptr<Inflater> inflater_;
};

}  // namespace blf2csv
