'use strict';
// corvane-replay completion: a script that makes a shell complete commands, options and their values.

const { Argument } = require('commander');

let own; // this command, whose parent knows the others

const longOption = ({ long, short }) => long ?? short;

// "" for the words after the program's name, then each command's; and the values of "command --option".
function wordsByContext(root) {
  const contexts = new Map([['', root.commands.map((command) => command.name())]]);
  for (const command of root.commands) {
    contexts.set(command.name(), [...command.options.map(longOption), '--help']);
    for (const option of command.options) {
      if (option.argChoices) contexts.set(`${command.name()} ${longOption(option)}`, option.argChoices);
    }
  }
  return contexts;
}

const cases = (entries, line) => entries.map(([context, words]) => line(context, words.join(' '))).join('\n');
const isOfOption = ([context]) => context.includes(' ');

// Where nothing else fits, file names are completed.
function bash(contexts) {
  const entries = [...contexts];
  const choose = (context, words) => `      '${context}') words='${words}' ;;`;
  return `_corvane_replay() {
  local current=\${COMP_WORDS[COMP_CWORD]} words= command=
  [ "$COMP_CWORD" -gt 1 ] && command=\${COMP_WORDS[1]}
  case "$command \${COMP_WORDS[COMP_CWORD-1]}" in
${cases(entries.filter(isOfOption), choose)}
    *) case "$command" in
${cases(
  entries.filter((entry) => !isOfOption(entry)),
  choose,
)}
    esac ;;
  esac
  COMPREPLY=($(compgen -W "$words" -- "$current"))
}
complete -o default -F _corvane_replay corvane-replay
`;
}

const zsh = (contexts) =>
  `autoload -U +X compinit bashcompinit && compinit && bashcompinit\n${bash(contexts)}`;

const fish = (contexts) =>
  cases([...contexts], (context, words) => {
    const [command, option] = context.split(' ');
    if (command === '') return `complete -c corvane-replay -n __fish_use_subcommand -a '${words}'`;
    const start = `complete -c corvane-replay -n '__fish_seen_subcommand_from ${command}'`;
    if (option) return `${start} -l ${option.slice(2)} -x -a '${words}'`;
    return words
      .split(' ')
      .map((word) => `${start} -l ${word.slice(2)}`)
      .join('\n');
  }) + '\n';

const powershell = (
  contexts,
) => `Register-ArgumentCompleter -Native -CommandName corvane-replay -ScriptBlock {
  param($current, $ast, $position)
  $words = @{
${cases([...contexts], (context, words) => `    '${context}' = '${words}'`)}
  }
  $given = @($ast.CommandElements | ForEach-Object { "$_" } | Where-Object { $_ -ne $current })
  $command = if ($given.Count -gt 1) { $given[1] } else { '' }
  $found = $words["$command $($given[-1])"]
  if (-not $found) { $found = $words[$command] }
  -split $found | Where-Object { $_ -like "$current*" } |
    ForEach-Object { [System.Management.Automation.CompletionResult]::new($_) }
}
`;

const SHELLS = { bash, zsh, fish, powershell };

async function run({ args: [shell], output }) {
  await output.write(SHELLS[shell](wordsByContext(own.parent)));
  return 0;
}

module.exports = {
  order: 95,
  define: (command) => {
    own = command;
    command
      .description('print a script that completes commands and options in a shell')
      .addArgument(new Argument('<shell>').choices(Object.keys(SHELLS)))
      .addHelpText(
        'after',
        '\nbash:        source <(corvane-replay completion bash)\n' +
          'zsh:         source <(corvane-replay completion zsh)\n' +
          'fish:        corvane-replay completion fish | source\n' +
          'PowerShell:  corvane-replay completion powershell | Out-String | Invoke-Expression',
      );
  },
  run,
};
