#include "tools/command/manual.h"

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sensorvela::tools {
namespace {

/// Stands in a footer before the statuses.
constexpr std::string_view kExitStatus = "\nExit status:\n";

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// Lines of text for roff, none of them a request.
std::string Roff(const std::string& text) {
  std::istringstream lines(Replaced(Replaced(text, "\\", "\\e"), "-", "\\-"));
  std::string roff;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('.') || line.starts_with('\'')) roff += "\\&";
    roff += line.empty() ? ".sp\n" : line + '\n';
  }
  return roff;
}

std::vector<const CLI::Option*> ShownOptions(const CLI::App& app) {
  return app.get_options([](const CLI::Option* option) { return !option->get_group().empty(); });
}

/// "-h", "--help"; empty for what is no option but an argument.
std::vector<std::string> Names(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back('-' + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string joined;
  for (const std::string& word : words) joined += (joined.empty() ? "" : separator) + word;
  return joined;
}

bool TakesValue(const CLI::Option& option) { return option.get_expected_max() > 0; }

/// The values that the option may have, separated by spaces; empty if they are not listed.
std::string Choices(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t first = type.find('{');
  if (first == std::string::npos) return "";
  return Replaced(type.substr(first + 1, type.find('}') - first - 1), ",", " ");
}

bool IsRepeatable(const CLI::Option& option) { return option.get_expected_max() > 1; }

/// The command with its arguments.
std::string Synopsis(const CLI::App& app) {
  std::string synopsis = app.get_name() + " [OPTIONS]";
  for (const CLI::Option* option : ShownOptions(app)) {
    if (!Names(*option).empty()) continue;
    synopsis += ' ' + option->get_name(true) + (IsRepeatable(*option) ? "..." : "");
  }
  return synopsis;
}

std::string Man(const CLI::App& app) {
  const std::string about = app.get_description();
  const std::size_t summary = about.find(".\n");
  std::string page = ".TH " + app.get_name() + " 1 \"\" \"libsensorvela " SENSORVELA_VERSION "\"\n";
  page += ".SH NAME\n" + Roff(app.get_name() + " - " + about.substr(0, summary));
  page += ".SH SYNOPSIS\n" + Roff(Synopsis(app));
  page += ".SH DESCRIPTION\n" + Roff(about.substr(about.find_first_not_of(".\n", summary)));
  page += ".SH OPTIONS\n";
  for (const CLI::Option* option : ShownOptions(app)) {
    const std::vector<std::string> names = Names(*option);
    std::string heading = names.empty() ? option->get_name(true) : Joined(names, ", ");
    if (!names.empty() && TakesValue(*option)) heading += ' ' + option->get_type_name();
    page += ".TP\n.B " + Roff(heading) + Roff(option->get_description());
  }
  const std::string footer = app.get_footer();
  const std::size_t exit_status = footer.find(kExitStatus);
  page += ".SH DETAILS\n.nf\n" + Roff(footer.substr(0, exit_status)) + ".fi\n";
  page += ".SH EXIT STATUS\n.nf\n" + Roff(footer.substr(exit_status + kExitStatus.size()));
  return page + ".fi";
}

std::string Bash(const CLI::App& app) {
  std::string all;
  std::string values;
  for (const CLI::Option* option : ShownOptions(app)) {
    const std::vector<std::string> names = Names(*option);
    if (names.empty()) continue;
    all += Joined(names, " ") + ' ';
    if (!TakesValue(*option)) continue;
    values += "    " + Joined(names, "|") + ") COMPREPLY=($(compgen -W '" + Choices(*option) +
              "' -- \"$current\")); return ;;\n";
  }
  const std::string function = '_' + Replaced(app.get_name(), "-", "_");
  return "# Where this completion offers nothing, bash offers files.\n" + function + R"(() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  case $previous in
)" + values +
         "  esac\n  [[ $current != -* ]] || COMPREPLY=($(compgen -W '" + all +
         "' -- \"$current\"))\n}\ncomplete -o default -F " + function + ' ' + app.get_name();
}

/// Text for `_arguments`, inside of single quotes.
std::string ZshText(std::string text) {
  for (const char* special : {"\\", "[", "]", ":"}) {
    text = Replaced(std::move(text), special, std::string("\\") + special);
  }
  return Replaced(std::move(text), "'", R"('\'')");
}

std::string Zsh(const CLI::App& app) {
  std::string completion = "#compdef " + app.get_name() + "\n_arguments";
  for (const CLI::Option* option : ShownOptions(app)) {
    const std::string help = ZshText(option->get_description());
    std::string meaning = '[' + help + ']';
    if (TakesValue(*option)) {
      const bool takes_file = option->get_type_name() == "FILE";
      const std::string values = takes_file ? "_files" : '(' + Choices(*option) + ')';
      meaning = Joined({"=", meaning, ":value:", values}, "");
    }
    const std::string start = std::string(" \\\n  '") + (IsRepeatable(*option) ? "*" : "");
    const std::vector<std::string> names = Names(*option);
    for (const std::string& name : names) {
      completion += Joined({start, name, meaning, "'"}, "");
    }
    if (!names.empty()) continue;
    const std::string place = IsRepeatable(*option) ? "" : "1";
    completion += Joined({start, place, ":", help, ":_files'"}, "");
  }
  return completion;
}

std::string Generated(const CLI::App& app, std::string_view what) {
  if (what == "man") return Man(app);
  return what == "bash" ? Bash(app) : Zsh(app);
}

}  // namespace

void AddGenerateOption(CLI::App& app) {
  app.add_option_function<std::string>(
         "--generate",
         [&app](const std::string& what) { throw CLI::CallForVersion(Generated(app, what), 0); })
      ->check(CLI::IsMember({"man", "bash", "zsh"}))
      ->group("");
}

}  // namespace sensorvela::tools
