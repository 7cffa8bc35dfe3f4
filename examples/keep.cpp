// Reads a trace of any format and writes the frames of one identifier into another, say ASC into TRC.
//
//     keep SOURCE ID TARGET        a SOURCE of - is standard input
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

#include "xlatr/frames.hpp"

namespace {

// A file, or what another program pipes in here, which is no file but bytes in order.
xlatr::Stream open(const std::string& source, const xlatr_stream_options& options) {
  if (source != "-") {
    return xlatr::Stream(source, &options);
  }
  xlatr::Input input;
  input.name = "standard input";
  input.read = [](std::uint64_t /*offset*/, void* buffer, std::uint64_t bytes) {
    const std::size_t count = std::fread(buffer, 1, static_cast<std::size_t>(bytes), stdin);
    return count == 0 && std::ferror(stdin) != 0 ? std::int64_t{-1} : static_cast<std::int64_t>(count);
  };
  return xlatr::Stream(input, &options);
}

// Returns how many frames were written.
std::uint64_t keep(const std::string& source, std::uint32_t id, const std::string& target) {
  xlatr_id_rule rule{};
  rule.first = id;
  rule.last = id;
  xlatr_selection selection{};
  selection.size = sizeof selection;
  selection.ids = &rule;
  selection.id_count = 1;
  xlatr_stream_options options{};
  options.size = sizeof options;
  options.selection = &selection;
  xlatr::Stream stream = open(source, options);
  const xlatr_head head = stream.head();
  xlatr::Sink sink(target, &head);
  for (const xlatr::BatchView batch : stream.batches()) {
    sink.write(batch);
  }
  sink.finish();
  return sink.account().written;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: keep SOURCE ID TARGET\n";
    return 2;
  }
  try {
    const auto id = static_cast<std::uint32_t>(std::stoul(argv[2], nullptr, 16));
    std::cout << keep(argv[1], id, argv[3]) << " frames kept\n";
    return EXIT_SUCCESS;
  } catch (const xlatr::Error& failure) {
    std::cerr << failure.what() << '\n';
  } catch (const std::logic_error&) {
    std::cerr << argv[2] << ": no identifier\n";
  }
  return EXIT_FAILURE;
}
