"""Completions of the program for bash, zsh and fish, of its command line. Used by scripts/program_pages.py."""

MADE = "# Made by scripts/program_pages.py; do not edit."


def takes_files(command):
    """Whether words without dashes are names of files."""
    return any(option["argument"] and option["value"] == "FILE" for option in command["options"])


def named(command, commands):
    """Its options; "--help" is told of the program alone."""
    is_program = command is commands[0]
    return [option for option in command["options"] if option["names"] and (is_program or "--help" not in option["names"])]


def words(options):
    return " ".join(name for option in options for name in option["names"])


def bash_values(option):
    if option["choices"]:
        return f'COMPREPLY=($(compgen -W "{" ".join(option["choices"])}" -- "$word"))'
    if option["value"] == "FILE":
        return '_vorlund_files -f "$word"'
    if option["value"] == "FOLDER":
        return '_vorlund_files -d "$word"'
    return "COMPREPLY=()"


def bash(commands):
    program, rest = commands[0], commands[1:]
    names = " ".join(command["name"] for command in rest)
    # What an option takes, which may differ from command to command.
    cases = []
    for command in commands:
        key = "*" if command is program else command["name"]
        for option in named(command, commands):
            if option["value"]:
                pattern = " | ".join(f'"{key}:{name}"' if key != "*" else f"*:{name}" for name in option["names"])
                cases.append(f"    {pattern})\n        {bash_values(option)}\n        return\n        ;;")
    offered = [f'    {command["name"]}) options+=" {words(named(command, commands))}" ;;' for command in rest]
    files = " | ".join(command["name"] for command in rest if takes_files(command))
    return f"""# shellcheck shell=bash disable=SC2207
{MADE}
_vorlund_files() {{
    local IFS=$'\\n'
    COMPREPLY=($(compgen "$1" -- "$2"))
    compopt -o filenames 2>/dev/null
}}

_vorlund() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} option=${{COMP_WORDS[COMP_CWORD - 1]}} command="" i
    local options="{words(named(program, commands))}" ended=""
    # The shell takes "--option=value" apart.
    if [[ $word == "=" ]]; then
        word=""
    elif [[ $option == "=" ]]; then
        option=${{COMP_WORDS[COMP_CWORD - 2]}}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        case ${{COMP_WORDS[i]}} in
        --plugin-path)
            [[ ${{COMP_WORDS[i + 1]}} != "=" ]] || ((++i))
            ((++i))
            ;;
        --) ended=1 ;;
        -*) ;;
        *) [[ -n $command ]] || command=${{COMP_WORDS[i]}} ;;
        esac
    done
    # A file alone is decoded.
    [[ -z $command || " {names} " == *" $command "* ]] || command=decode
    COMPREPLY=()
    case $command in
{chr(10).join(offered)}
    esac
    [[ -n $ended ]] || case $command:$option in
{chr(10).join(cases)}
    esac
    if [[ $word == -* && -z $ended ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$word"))
        return
    fi
    case $command in
    "")
        _vorlund_files -f "$word"
        COMPREPLY+=($(compgen -W "{names}" -- "$word"))
        ;;
    {files}) _vorlund_files -f "$word" ;;
    esac
}}
complete -F _vorlund vorlund
"""


def zsh_quoted(text):
    for letter in "\\[]:":
        text = text.replace(letter, "\\" + letter)
    return text.replace("'", "'\\''")


def zsh_value(option):
    if not option["value"]:
        return ""
    action = " "
    if option["choices"]:
        action = f'({" ".join(option["choices"])})'
    elif option["value"] == "FILE":
        action = "_files"
    elif option["value"] == "FOLDER":
        action = "_files -/"
    return f":{zsh_quoted(option['value'])}:{action}"


def zsh_specs(command, commands):
    for option in named(command, commands):
        text = f"[{zsh_quoted(option['help'])}]{zsh_value(option)}"
        others = f"({' '.join(option['names'])})" if not option["repeated"] else "*"
        for name in option["names"]:
            sign = "" if not option["value"] else "=" if name.startswith("--") else "+"
            yield f"'{others}{name}{sign}{text}'"


def zsh(commands):
    program, rest = commands[0], commands[1:]
    described = "\n".join(f"        '{command['name']}:{zsh_quoted(command['help'])}'" for command in rest)
    cases = []
    for command in sorted(rest, key=lambda command: command["name"] == "decode"):
        specs = list(zsh_specs(command, commands))
        if takes_files(command):
            specs.append("'*:FILE:_files'")
        lines = " \\\n            ".join(specs + ["$program"])
        # A file alone is decoded.
        pattern = "decode | *" if command["name"] == "decode" else command["name"]
        cases.append(f"    {pattern})\n        _arguments -s -S \\\n            {lines}\n        ;;")
    general = "\n        ".join(zsh_specs(program, commands))
    return f"""#compdef vorlund
{MADE}
_vorlund() {{
    local curcontext=$curcontext state state_descr line
    typeset -A opt_args
    local -a commands program
    commands=(
{described}
    )
    program=(
        {general}
    )
    _arguments -C -s -S $program '1: :->command' '*:: :->rest' && return
    case $state in
    command)
        _describe -t commands command commands
        _files
        return
        ;;
    esac
    curcontext=${{curcontext%:*:*}}:vorlund-$words[1]:
    case $words[1] in
{chr(10).join(cases)}
    esac
}}
_vorlund "$@"
"""


def fish_quoted(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_option(condition, option):
    made = f"complete -c vorlund{condition}"
    for name in option["names"]:
        made += f" -l {name[2:]}" if name.startswith("--") else f" -s {name[1:]}"
    if option["choices"]:
        made += f" -x -a {fish_quoted(' '.join(option['choices']))}"
    elif option["value"] == "FILE":
        made += " -r -F"
    elif option["value"] == "FOLDER":
        made += " -x -a '(__fish_complete_directories)'"
    elif option["value"]:
        made += " -x"
    return made + f" -d {fish_quoted(option['help'])}"


def fish(commands):
    program, rest = commands[0], commands[1:]
    lines = [MADE, FISH_COMMAND.format(" ".join(command["name"] for command in rest)), "complete -c vorlund -f"]
    lines += [fish_option("", option) for option in named(program, commands)]
    nothing, behind = " -n '__vorlund_command_is \"\"'", " -n '__vorlund_command_is {}'"
    lines.append(f"complete -c vorlund{nothing} -F")
    lines += [f"complete -c vorlund{nothing} -a {command['name']} -d {fish_quoted(command['help'])}" for command in rest]
    for command in rest:
        condition = behind.format(command["name"])
        if takes_files(command):
            lines.append(f"complete -c vorlund{condition} -F")
        lines += [fish_option(condition, option) for option in named(command, commands)]
    return "\n".join(lines) + "\n"


FISH_COMMAND = """# Whether the first word without dashes is this one; "" for none.
function __vorlund_command_is
    set -l words (commandline -opc)
    set -l command ""
    set -l is_folder 0
    for word in $words[2..-1]
        if test $is_folder = 1
            set is_folder 0
        else if test "$word" = --plugin-path
            set is_folder 1
        else if not string match -q -- '-*' "$word"
            set command "$word"
            break
        end
    end
    # A file alone is decoded.
    if test -n "$command"; and not contains -- "$command" {}
        set command decode
    end
    test "$command" = "$argv[1]"
end"""

SHELLS = {"vorlund": bash, "_vorlund": zsh, "vorlund.fish": fish}
