// Completion of command lines in bash and zsh.
#include "describe/Describe.h"

#include <string>
#include <vector>

namespace selu {
namespace {

// In single quotes, for either shell.
std::string ShellQuoted(std::string const& text) {
  std::string quoted = "'";
  for (char const c : text) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted + "'";
}

std::string Joined(std::vector<std::string> const& words) {
  std::string text;
  for (auto const& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// 'selu info' | 'selu walk' | 'selu walk line': the words that lead from command to command.
std::string CommandPattern(std::vector<StCommandText> const& commands) {
  std::string text;
  for (auto const& command : commands)
    if (command.name != commands.front().name)
      text += (text.empty() ? "" : "|") + ShellQuoted(command.name);
  return text;
}

std::string BashOptionCase(StCommandText const& command, StOptionText const& option) {
  std::string pattern;
  for (auto const& name : option.names)
    pattern += (pattern.empty() ? "" : "|") + ShellQuoted(command.name + " " + name);
  std::string action = "return";
  if (!option.choices.empty())
    action = "mapfile -t COMPREPLY < <(compgen -W " + ShellQuoted(Joined(option.choices)) +
             " -- \"$word\"); return";
  else if (option.TakesFile())
    action = "mapfile -t COMPREPLY < <(compgen -f -- \"$word\"); return";
  return "    " + pattern + ") " + action + " ;;\n";
}

// Zsh's form of an option: --format=[help]:FORMAT:(table json csv)
std::string ZshText(std::string const& text) {
  std::string escaped;
  for (char const c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ZshOption(StOptionText const& option, std::string const& name) {
  std::string text = "*" + name + "[" + ZshText(option.help) + "]";
  if (option.value.empty()) return ShellQuoted(text);
  if (name.starts_with("--")) text.insert(1 + name.size(), "=");
  text += ":" + ZshText(option.value) + ":";
  if (!option.choices.empty())
    text += "(" + Joined(option.choices) + ")";
  else if (option.TakesFile())
    text += "_files";
  else
    text += " ";
  return ShellQuoted(text);
}

std::string ZshCase(StCommandText const& command, std::vector<StCommandText> const& commands) {
  std::string text = "    (" + ShellQuoted(command.name) + ")\n";
  if (!command.commands.empty()) {
    text += "      below=(\n";
    for (auto const& other : commands)
      if (other.name == command.name + " " + LastWord(other.name))
        text +=
            "        " + ShellQuoted(LastWord(other.name) + ":" + ZshText(other.summary)) + "\n";
    text += "      )\n";
  }
  text += "      options=(\n";
  for (auto const& option : command.options)
    for (auto const& name : option.names) text += "        " + ZshOption(option, name) + "\n";
  return text + "      )\n      ;;\n";
}

} // namespace

std::string BashCompletion(std::vector<StCommandText> const& commands) {
  std::string text =
      R"(# Completion of selu for bash: commands, options, the words that an option takes, files.
_selu() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=selu i
  local options= commands= asksForHelp=
  if [[ $word == '=' ]]; then word=
  elif [[ $before == '=' ]]; then before=${COMP_WORDS[COMP_CWORD-2]}; fi
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ "$command ${COMP_WORDS[i]}" == 'selu help' ]]; then asksForHelp=yes; continue; fi
    case "$command ${COMP_WORDS[i]}" in
      )" +
      CommandPattern(commands) + R"() command+=" ${COMP_WORDS[i]}" ;;
    esac
  done
  case "$command $before" in
)";
  for (auto const& command : commands)
    for (auto const& option : command.options)
      if (!option.value.empty()) text += BashOptionCase(command, option);
  text += "  esac\n  case $command in\n";
  for (auto const& command : commands) {
    std::vector<std::string> names;
    for (auto const& option : command.options)
      names.insert(names.end(), option.names.begin(), option.names.end());
    text += "    " + ShellQuoted(command.name) +
            ") commands=" + ShellQuoted(Joined(command.commands)) +
            " options=" + ShellQuoted(Joined(names)) + " ;;\n";
  }
  return text + R"(  esac
  if [[ $word == -* && -z $asksForHelp ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ -n $commands ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  elif [[ -z $asksForHelp ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -o filenames -F _selu selu
)";
}

std::string ZshCompletion(std::vector<StCommandText> const& commands) {
  std::string text = R"(#compdef selu
# Completion of selu for zsh: commands, options, the words that an option takes, files.
_selu() {
  local command=selu asksForHelp= i
  local -a below options
  for ((i = 2; i < CURRENT; ++i)); do
    if [[ "$command $words[i]" == 'selu help' ]]; then asksForHelp=yes; continue; fi
    case "$command $words[i]" in
      ()" + CommandPattern(commands) +
                     R"() command+=" $words[i]" ;;
    esac
  done
  case $command in
)";
  for (auto const& command : commands) text += ZshCase(command, commands);
  return text + R"(  esac
  if [[ -n $asksForHelp ]]; then
    (( $#below )) && _describe command below
  elif (( $#below )) && [[ $PREFIX != -* ]]; then
    _describe command below
  else
    _arguments -s $options '*:file:_files'
  fi
}
_selu "$@"
)";
}

} // namespace selu
