// From the file to the joined content of its containers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "formats/blf/blf_log_queue.hpp"
#include "formats/blf/blf_log_remarks.hpp"
#include "formats/blf/blf_log_scanner.hpp"
#include "io/input_file.hpp"
#include "util/whole_inflater.hpp"

namespace xlatr::blf_log {

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
  // Opens the file, whose objects begin at that offset. Throws std::ios_base::failure when it can't be read. `remarks`
  // must outlive this object.
  ContentInput(const InputSource& source, std::uint64_t firstObject, Remarks& remarks);
  ~ContentInput();
  ContentInput(const ContentInput&) = delete;
  ContentInput& operator=(const ContentInput&) = delete;

  // Takes one step, which does a limited amount of work and appends a limited number of bytes, or none, to `content`.
  // Throws std::ios_base::failure when reading fails.
  [[nodiscard]] Piece read(ByteQueue& content);

  // How much of the file is done, in bytes and in hundredths of a per cent.
  [[nodiscard]] std::uint64_t position() const { return std::min(scanner_.position(), fileSize_); }
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
  // Whether all of the container was inflated. One that is large, damaged or not as it says is not.
  [[nodiscard]] bool inflateWhole(ByteQueue& content);
  [[nodiscard]] Piece skip();
  // How many bytes of the container or the object are in `input_`, which is filled when it is empty.
  [[nodiscard]] std::size_t available();
  void take(std::size_t count);
  void fill();

  Remarks& remarks_;
  InputFile file_;
  std::uint64_t fileSize_;
  ByteQueue input_;
  bool atEnd_ = false;  // all of the file is in `input_` or was
  ObjectScanner scanner_;
  State state_ = State::BetweenObjects;
  std::uint64_t left_ = 0;
  std::uint64_t containerOffset_ = 0;
  std::uint64_t statedContent_ = 0;  // what the container says
  std::uint64_t content_ = 0;        // what it has given so far
  bool containerBegins_ = false;     // nothing of it has been inflated
  std::unique_ptr<Inflater> inflater_;
  WholeInflater wholeInflater_;
};

}  // namespace xlatr::blf_log
