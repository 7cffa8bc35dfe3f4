// xlatr_pages FOLDER DATE: writes the manual pages and the completions into the folder.
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "pages.hpp"

namespace {

using namespace xlatr::cli;

void write(const std::filesystem::path& folder, const std::vector<PageFile>& pages) {
  std::filesystem::create_directories(folder);
  for (const PageFile& page : pages) {
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(folder / page.name, std::ios::binary | std::ios::trunc);
    file << page.text;
    file.close();
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv, argv + argc);
  if (words.size() != 3) {
    std::cerr << "usage: xlatr_pages FOLDER DATE\n";
    return 2;
  }
  try {
    write(words[1], manualPages(words[2]));
    write(words[1], completionScripts());
  } catch (const std::exception& failure) {
    std::cerr << "xlatr_pages: " << words[1] << ": " << failure.what() << '\n';
    return 1;
  }
  return 0;
}
