// The shells' side of Completion.h. Each script runs the very program that is being typed, wherever it lies.

#include "Tool/Completion.h"

namespace korvell {

namespace {

// Its own splitting parts words at "=" and ":", which names of items and ids may hold: they are put together
// again by what stands between them on the line. A value is inserted as the word was begun, quoted or not.
constexpr std::string_view bashScript = R"(# bash completion for korvell
_korvell() {
  local line=${COMP_LINE:0:COMP_POINT} words=() word i
  for ((i = 0; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ $i -gt 0 && -n $word && $line == "$word"* ]]; then
      words[${#words[@]}-1]+=$word
    else
      line=${line#"${line%%[![:space:]]*}"}
      words+=("$word")
    fi
    line=${line#"$word"}
  done
  local typed=${words[${#words[@]}-1]} mark= plain=() given
  for ((i = 1; i < ${#words[@]}; i++)); do
    given=${words[i]}
    if [[ $given == \'* ]]; then given=${given:1}; given=${given%\'};
    elif [[ $given == \"* ]]; then given=${given:1}; given=${given%\"};
    else given=${given//\\/}; fi
    plain+=("$given")
  done
  [[ $typed == [\'\"]* ]] && mark=${typed:0:1}
  local wanted=${typed#"$mark"} cut=
  # Readline replaces only what follows the last of its own separators.
  if [[ -z $mark && $COMP_WORDBREAKS == *[:=]* && $wanted == *[:=]* ]]; then cut=${wanted%"${wanted##*[:=]}"}; fi
  COMPREPLY=()
  local value candidate
  while IFS=$'\t' read -r value _; do
    if [[ $value == :files ]]; then
      compopt -o filenames 2>/dev/null
      while IFS= read -r candidate; do COMPREPLY+=("$candidate"); done < <(compgen -f -- "$wanted")
      return
    fi
    candidate=$value
    [[ -n $mark ]] || printf -v candidate %q "$value"
    # A "=" or ":" needs no quotes in the middle of a word.
    [[ -n $mark || $value == *[!a-zA-Z0-9_.:=@/+-]* ]] || candidate=$value
    [[ $candidate == "$wanted"* ]] && COMPREPLY+=("${candidate#"$cut"}")
  done < <("${COMP_WORDS[0]/#\~/$HOME}" complete "${plain[@]}" 2>/dev/null)
}
complete -F _korvell korvell
)";

constexpr std::string_view zshScript = R"(#compdef korvell
_korvell() {
  local -a lines candidates
  local line value tool=${(Q)words[1]/#\~/$HOME}
  lines=("${(@f)$($tool complete "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
  if [[ $lines[1] == :files ]]; then
    _files
    return
  fi
  for line in $lines; do
    value=${line%%$'\t'*}
    [[ -n $value ]] || continue
    value=${value//\\/\\\\}
    value=${value//:/\\:}
    [[ $line == *$'\t'* ]] && value+=:${line#*$'\t'}
    candidates+=("$value")
  done
  _describe -V korvell candidates
}
if [[ $funcstack[1] == _korvell ]]; then
  _korvell "$@"
else
  compdef _korvell korvell
fi
)";

constexpr std::string_view fishScript = R"(# fish completion for korvell
function __korvell_complete
    set -l words (commandline -opc)
    set -l tool $words[1]
    set -e words[1]
    set -l found ($tool complete $words (commandline -ct) 2>/dev/null)
    if test "$found[1]" = ":files"
        __fish_complete_path (commandline -ct)
    else
        printf '%s\n' $found
    end
end
complete -c korvell -f -k -a '(__korvell_complete)'
)";

} // namespace

std::string_view completionScript(CompletedShell shell) {
  switch (shell) {
  case CompletedShell::bash:
    return bashScript;
  case CompletedShell::zsh:
    return zshScript;
  case CompletedShell::fish:
    break;
  }
  return fishScript;
}

} // namespace korvell
