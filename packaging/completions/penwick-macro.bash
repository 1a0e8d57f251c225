# bash completion for penwick-macro. It does not need the functions of bash-completion.

# Splits the line before the cursor into words as the shell does; the last is the one to complete. `quote` is the
# quotation mark that is open there. Readline replaces only what follows the first `cut` characters of the word,
# because it also breaks words at = and :.
_penwick_macro_split() {
    local line=${COMP_LINE:0:COMP_POINT} is_escaped='' i c
    words=('') cut=0 quote=''
    for ((i = 0; i < ${#line}; ++i)); do
        c=${line:i:1}
        if [[ $is_escaped ]]; then
            words[-1]+=$c is_escaped=
        elif [[ $c == \\ && $quote != \' ]]; then
            is_escaped=1
        elif [[ $quote ]]; then
            if [[ $c == "$quote" ]]; then quote=; else words[-1]+=$c; fi
        elif [[ $c == [\'\"] ]]; then
            quote=$c
        elif [[ $c == [[:blank:]] ]]; then
            [[ ! ${words[-1]} ]] || words+=('')
            cut=0
        else
            words[-1]+=$c
            [[ $COMP_WORDBREAKS != *"$c"* ]] || cut=${#words[-1]}
        fi
    done
}

# Offers the lines of standard input that begin with $1, quoted, and without the first $2 characters.
_penwick_macro_offer() {
    local line
    while IFS= read -r line; do
        [[ $line == "$1"* ]] || continue
        line=${line:$2}
        case $quote in
        \') line=${line//\'/\'\\\'\'} ;;
        \") line=$(sed 's/[\\"$`]/\\&/g' <<<"$line") ;;
        *) printf -v line %q "$line" ;;
        esac
        COMPREPLY+=("$line")
    done
}

_penwick_macro() {
    local words cut quote option word argument start
    COMPREPLY=()
    _penwick_macro_split
    word=${words[-1]}
    option=''
    ((${#words[@]} < 3)) || option=${words[-2]}
    argument=$word start=$cut
    if [[ $word == --*=* ]]; then
        option=${word%%=*}
        argument=${word#*=}
        start=$((cut > ${#option} ? cut - ${#option} - 1 : 0))
    fi
    [[ " ${words[*]:1:${#words[@]}-2} " != *" -- "* ]] || return
    case $option in
    -m | --macro)
        compopt +o default +o bashdefault
        _penwick_macro_offer "$argument" "$start" < <("$1" --list 2>/dev/null | cut -f 1,2 | tr '\t' '\n')
        return
        ;;
    --color)
        _penwick_macro_offer "$argument" "$start" < <(printf '%s\n' auto always never)
        return
        ;;
    -e | -j | --code | --input | --selection | --line | --cursor | --jobs | --timeout | --stdin-filename | --backup)
        # --backup takes its argument only after =.
        if [[ $option != --backup || $word == --backup=* ]]; then
            compopt +o default +o bashdefault
            return
        fi
        ;;
    -f | -o | --file | --output | --files-from | --files0-from)
        return # Names of files, which readline completes.
        ;;
    esac
    [[ $word == -* ]] || return
    compopt -o nospace
    local name
    for name in --macro= --file= --code= --input= --selection= --line= --cursor= --in-place --backup --output= \
        --check --diff --names --null --json --quiet --verbose --color= --files-from= --files0-from= \
        --stdin-filename= --ignore-non-utf8 --jobs= --timeout= --strict --list --help --version; do
        [[ $name != "$word"* ]] || COMPREPLY+=("$name")
    done
    [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} != *= ]] && compopt +o nospace
}

complete -o default -o bashdefault -F _penwick_macro penwick-macro
