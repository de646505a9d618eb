#include "vekcam/commands/manual.h"

#include <fmt/format.h>
#include <vector>

namespace vekcam {
namespace {

/// One option as it is shown.
struct Entry {
  std::vector<std::string> names;  ///< with their dashes; empty: positional
  std::string value;               ///< what follows it; empty: a flag
  std::vector<std::string> choices;
  std::string description;
};

std::vector<const CLI::App*> commandsOf(const CLI::App& program) {
  return program.get_subcommands([](const CLI::App*) { return true; });
}

std::string oneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n') c = ' ';
  }
  return text;
}

std::vector<Entry> entriesOf(const CLI::App& command) {
  std::vector<Entry> entries;
  for (const CLI::Option* option : command.get_options()) {
    if (option->get_group().empty()) continue;  // hidden
    Entry entry;
    for (const std::string& name : option->get_snames()) entry.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) entry.names.push_back("--" + name);
    entry.description = oneLine(option->get_description());
    if (option->get_items_expected_max() > 0) {
      std::string type = option->get_type_name();  // TYPE:{choice,choice}
      const size_t brace = type.find('{');
      if (brace != std::string::npos && type.ends_with('}')) {
        std::string choice;
        for (const char c : type.substr(brace + 1)) {
          if (c != ',' && c != '}') {
            choice += c;
          } else {
            entry.choices.push_back(choice);
            choice.clear();
          }
        }
      }
      entry.value = entry.names.empty() ? option->get_name() : type.substr(0, type.find(':'));
    }
    entries.push_back(entry);
  }
  return entries;
}

// ---- man ----

std::string roff(const std::string& text) {
  std::string out;
  bool isLineStart = true;
  for (const char c : text) {
    if (isLineStart && (c == '.' || c == '\'')) out += R"(\&)";
    if (c == '\\' || c == '-') out += '\\';
    out += c == '\\' ? 'e' : c;
    isLineStart = c == '\n';
  }
  return out;
}

std::string optionLines(const CLI::App& command) {
  std::string out;
  for (const Entry& entry : entriesOf(command)) {
    std::string names;
    for (const std::string& name : entry.names)
      names += fmt::format(R"({}\fB{}\fR)", names.empty() ? "" : ", ", roff(name));
    const std::string value =
        entry.value.empty() ? "" : fmt::format(R"(\fI{}\fR)", roff(entry.value));
    out += fmt::format(".TP\n{}{}{}\n{}\n", names, names.empty() || value.empty() ? "" : " ", value,
                       roff(entry.description));
    if (!entry.choices.empty() && entry.choices.size() > 3)
      out += fmt::format("One of {}.\n", roff(fmt::format("{}", fmt::join(entry.choices, ", "))));
  }
  return out;
}

// ---- Completions ----

std::string words(const std::vector<Entry>& entries) {
  std::string out;
  for (const Entry& entry : entries) {
    for (const std::string& name : entry.names) out += name + " ";
  }
  if (!out.empty()) out.pop_back();
  return out;
}

std::string bash(const CLI::App& program) {
  std::string commands, cases, choices;
  for (const CLI::App* command : commandsOf(program)) {
    const std::string& name = command->get_name();
    commands += name + " ";
    const std::vector<Entry> entries = entriesOf(*command);
    cases += fmt::format("    {}) words='{}' ;;\n", name, words(entries));
    for (const Entry& entry : entries) {
      for (const std::string& option : entry.names) {
        if (!entry.choices.empty())
          choices += fmt::format("    {} {}) words='{}' ;;\n", name, option,
                                 fmt::join(entry.choices, " "));
      }
    }
  }
  // Patterns of two words need quotes.
  std::string quoted;
  for (size_t at = 0; at < choices.size();) {
    const size_t end = choices.find('\n', at);
    std::string line = choices.substr(at, end - at);
    line.insert(4, "'");
    line.insert(line.find(')'), "'");
    quoted += line + "\n";
    at = end + 1;
  }
  return "# Completions of vekcam for bash.\n"
         "_vekcam() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local command=${COMP_WORDS[1]} words=\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W '" +
         commands + words(entriesOf(program)) +
         "' -- \"$word\"))\n"
         "    return\n"
         "  fi\n"
         "  case \"$command $before\" in\n" +
         quoted +
         "  esac\n"
         "  if [ -z \"$words\" ]; then case $word in -*) case $command in\n" +
         cases +
         "  esac ;; esac fi\n"
         "  if [ -n \"$words\" ]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
         "  else COMPREPLY=($(compgen -f -- \"$word\")); fi\n"
         "}\n"
         "complete -o filenames -F _vekcam vekcam\n";
}

/// Within single quotes.
std::string inQuotes(const std::string& text) {
  std::string out;
  for (const char c : text) out += c == '\'' ? std::string(R"('\'')") : std::string(1, c);
  return out;
}

std::string zshText(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
    out += c;
  }
  return inQuotes(out);
}

std::string zsh(const CLI::App& program) {
  std::string commands, cases;
  for (const CLI::App* command : commandsOf(program)) {
    commands +=
        fmt::format("    '{}:{}'\n", command->get_name(), zshText(command->get_description()));
    cases += fmt::format("    {}) _arguments", command->get_name());
    for (const Entry& entry : entriesOf(*command)) {
      const std::string values = entry.choices.empty()
                                     ? std::string("_files")
                                     : fmt::format("({})", fmt::join(entry.choices, " "));
      const std::string value =
          entry.value.empty() ? "" : fmt::format(":{}:{}", zshText(entry.value), values);
      for (const std::string& name : entry.names)
        cases += fmt::format(" \\\n      '{}[{}]{}'", name, zshText(entry.description), value);
      if (entry.names.empty()) cases += " \\\n      '*:file:_files'";
    }
    cases += " ;;\n";
  }
  return "#compdef vekcam\n"
         "# Completions of vekcam for zsh.\n"
         "local -a commands=(\n" +
         commands +
         "  )\n"
         "if (( CURRENT == 2 )); then\n"
         "  _describe command commands\n"
         "else\n"
         "  local command=$words[2]\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  case $command in\n" +
         cases +
         "  esac\n"
         "fi\n";
}

std::string fish(const CLI::App& program) {
  std::string out = "# Completions of vekcam for fish.\n";
  for (const CLI::App* command : commandsOf(program)) {
    const std::string& name = command->get_name();
    out += fmt::format("complete -c vekcam -n __fish_use_subcommand -a {} -d '{}'\n", name,
                       inQuotes(command->get_description()));
    for (const Entry& entry : entriesOf(*command)) {
      if (entry.names.empty()) continue;
      out += fmt::format("complete -c vekcam -n '__fish_seen_subcommand_from {}'", name);
      for (const std::string& option : entry.names)
        out += option.starts_with("--") ? " -l " + option.substr(2) : " -s " + option.substr(1);
      if (!entry.value.empty()) out += " -r";
      if (!entry.choices.empty()) out += fmt::format(" -f -a '{}'", fmt::join(entry.choices, " "));
      out += fmt::format(" -d '{}'\n", inQuotes(entry.description));
    }
  }
  return out;
}

}  // namespace

std::string manualPage(const CLI::App& program) {
  std::string out = ".TH VEKCAM 1 \"\" \"vekcam " VEKCAM_VERSION
                    "\"\n"
                    ".SH NAME\nvekcam \\- a camera on a desk\n"
                    ".SH SYNOPSIS\n.B vekcam\n.I COMMAND\n[options]\n"
                    ".SH DESCRIPTION\n" +
                    roff(oneLine(program.get_description())) + "\n.SH COMMANDS\n";
  for (const CLI::App* command : commandsOf(program)) {
    out += fmt::format(".SS vekcam {}\n{}.\n", roff(command->get_name()),
                       roff(command->get_description()));
    out += optionLines(*command);
    if (!command->get_footer().empty())
      out += ".PP\n.nf\n" + roff(command->get_footer()) + "\n.fi\n";
  }
  out += ".SH EXIT STATUS\n";
  for (const auto& [code, meaning] : {std::pair{0, "All went well."},
                                      {1, "Input or output cannot be used."},
                                      {2, "The command line cannot be meant."}}) {
    out += fmt::format(".TP\n{}\n{}\n", code, meaning);
  }
  return out;
}

std::string completion(const CLI::App& program, const std::string& shell) {
  return shell == "zsh" ? zsh(program) : shell == "fish" ? fish(program) : bash(program);
}

}  // namespace vekcam
