# Completion of corvane's command line for bash; the package bash-completion loads it, and `source` will do.

# Options in the form that is typed; the whole word is offered to those who have begun it.
_corvane_options() {
    case $1 in
        '' | - | -[abrs]) compgen -W '-a: -b: -r: -s: -nologo -help' -- "$1" ;;
        -*) compgen -W '-attachment: -body: -recipient: -subject: -nologo -help' -- "$1" ;;
    esac
}

# The files whose path begins with $1, as the shell is to read them: within the quote $2, or with backslashes. A tilde
# the shell would leave alone there.
_corvane_files() {
    local file path=${1/#\~\//$HOME/} quote=$2
    [[ $quote ]] || path=${path//\\/}
    compgen -f -- "$path" | while IFS= read -r file; do
        [[ -d $file ]] && file+=/
        [[ $quote ]] || printf -v file %q "$file"
        printf '%s\n' "$file"
    done
}

_corvane() {
    # Bash replaces $2 alone, which begins behind a ':' or a quote within the word.
    local before=${COMP_LINE:0:COMP_POINT} quote word path
    before=${before%"$2"}
    before=${before##*[[:space:]]}
    quote=${before//[^\"\']/}
    word=${before//[\"\']/}$2
    case $word in
        @@*) ;;
        @*) path=${word#@} ;;
        [-/][Aa]*:*) path=${word#*:} ;;
        *:*) ;;
        *) mapfile -t COMPREPLY < <(_corvane_options "$word") ;;
    esac
    if [[ -v path ]]; then
        mapfile -t COMPREPLY < <(_corvane_files "$path" "$quote")
        COMPREPLY=("${COMPREPLY[@]/#/${2%"$path"}}")
    fi
    [[ ${COMPREPLY[0]-} != *[:/] ]] || compopt -o nospace
}

complete -F _corvane corvane
