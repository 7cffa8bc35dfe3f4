#include "command_line.hpp"

#include <CLI/CLI.hpp>
#include <limits>
#include <string>

#include "command_failure.hpp"
#include "formats.hpp"

namespace xlatr::cli {

namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 written but with warnings, 4 target exists, 130 interrupted.";

CLI::App* addConvert(CLI::App& app, ConvertArguments& arguments) {
  auto* command = app.add_subcommand("convert", "Convert one trace file into another format or version");
  command->add_option("SOURCE", arguments.source, "The trace to convert")->required()->type_name("");
  command->add_option("TARGET", arguments.target, "The file to write; its extension names the target format")
      ->required()
      ->type_name("");
  command
      ->add_option("--to", arguments.to,
                   "Target format (" + nameList(targetFormats()) + "); by default that of TARGET's extension")
      ->option_text("FORMAT");
  command
      ->add_option("--target-version", arguments.targetVersion,
                   "File version of the target; by default the format's current one")
      ->option_text("V");
  command
      ->add_option("--session", arguments.sessions,
                   "Session of a btr source, counted from 1; may be given several times; by default all")
      ->option_text("N")
      ->allow_extra_args(false)
      ->check(CLI::Range(std::uint32_t{1}, std::numeric_limits<std::uint32_t>::max()));
  command
      ->add_option("--separator", arguments.separator,
                   "Character between the columns of a csv target, or 'tab'; by default ';'")
      ->option_text("C");
  command->add_flag("--zipped", arguments.zipped, "Compress the data of an mf4 target");
  command->add_flag("--sorted", arguments.sorted, "Sort the records of an mf4 target by kind of frame");
  command->add_flag("-f,--force", arguments.force, "Overwrite target files that exist");
  command->add_flag("-q,--quiet", arguments.quiet, "No progress bar and no list of files; errors and warnings only");
  command->footer(
      "A target without a bus column (trc 1.0, 1.1, 2.0) becomes one file per bus, such as drive_BUS1.trc;\n"
      "a btr source becomes one file per session, such as drive_S1.trc.\n\n"
      "Examples:\n"
      "  xlatr convert drive.trc drive-2.1.trc --target-version 2.1\n"
      "  xlatr convert drive.trc out/drive.csv --separator tab\n"
      "  xlatr convert drive.trc drive.log --to trc -f\n\n" +
      std::string(kExitCodes));
  return command;
}

CLI::App* addInfo(CLI::App& app, InfoArguments& arguments) {
  auto* command = app.add_subcommand("info", "Show what trace files are: format, version, start time, size, targets");
  command->add_option("FILE", arguments.files, "Trace files")->required()->type_name("");
  command->add_flag("--json", arguments.json, "Print a JSON array with one object per file");
  command->footer(
      "Examples:\n"
      "  xlatr info drive.trc\n"
      "  xlatr info --json *.trc\n\n" +
      std::string(kExitCodes));
  return command;
}

CLI::App* addFormats(CLI::App& app, FormatsArguments& arguments) {
  auto* command = app.add_subcommand("formats", "List the formats, their versions and what converts into what");
  command->add_flag("--json", arguments.json, "Print a JSON array with one object per format");
  command->footer(
      "READS and WRITES say what 'xlatr convert' takes as SOURCE and as TARGET.\n\n"
      "Examples:\n"
      "  xlatr formats\n"
      "  xlatr formats --json");
  return command;
}

// The help for the command that was mistyped.
std::string helpCommand(const CLI::App& app) {
  const auto commands = app.get_subcommands();
  return "'xlatr " + (commands.empty() ? std::string() : commands.front()->get_name() + " ") + "--help'";
}

}  // namespace

Command parseCommandLine(int argc, const char* const* argv) {
  CLI::App app("Converts CAN, CAN FD and LIN bus traces between file formats.", "xlatr");
  ConvertArguments convert;
  InfoArguments info;
  FormatsArguments formats;
  app.set_version_flag("--version", "xlatr " XLATR_PROGRAM_VERSION, "Print the version and exit");
  // A missing command is reported below: what CLI11 says of it would hide a mistyped one.
  app.require_subcommand(0, 1);
  app.footer(
      "Examples:\n"
      "  xlatr convert drive.trc drive-2.0.trc --target-version 2.0\n"
      "  xlatr info drive.trc\n"
      "  xlatr formats\n\n"
      "'xlatr COMMAND --help' shows more about a command.\n" +
      std::string(kExitCodes));
  const CLI::App* convertCommand = addConvert(app, convert);
  const CLI::App* infoCommand = addInfo(app, info);
  const CLI::App* formatsCommand = addFormats(app, formats);

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    app.exit(help);
    return ExitCode::Done;
  } catch (const CLI::ParseError& error) {
    throw CommandFailure(ExitCode::WrongUsage, std::string(error.what()) + "; see " + helpCommand(app));
  }
  if (convertCommand->parsed()) {
    return convert;
  }
  if (infoCommand->parsed()) {
    return info;
  }
  if (formatsCommand->parsed()) {
    return formats;
  }
  throw CommandFailure(ExitCode::WrongUsage, "no command given; use convert, info or formats, see " + helpCommand(app));
}

}  // namespace xlatr::cli
