# bash completion for qortlv: options and file names.
#
# One word an option, in the order the program looks them up:
# name:shortest-abbreviation[:what follows it]. "file" completes a file's
# name behind the option, "byte" offers pad bytes; an option without a
# third field takes nothing; "count" takes a number, which isn't completed.
_qortlv_options=(
    -hexadecimal:2 -decomposed:2 -syntax:2
    -binary:2:file -text:2:file -output:2:file
    -noshort:4 -noaddition:4 -notitles:4 -help:5
    -zfixencoding:3:file -znotrace:3 -pad:2:byte -nocdrheaders:4
    --help:6 --version:9
    -pem:3:file -base64:3:file -json:2
    -oids:5 -oidfile:5:file -dig:4 -utf8:5
    -diagnose:4 -check:3 -tags:3:file -threads:3:count -records:3:count
)

# What follows the option that `word` abbreviates: the first row whose name
# begins with it, A-Z folded, at no less than its shortest abbreviation.
_qortlv_argument_of()
{
    local word=${1,,} row name minimum rest
    for row in "${_qortlv_options[@]}"; do
        name=${row%%:*}
        rest=${row#*:}
        minimum=${rest%%:*}
        if (( ${#word} >= minimum && ${#word} <= ${#name} )) && [[ $name == "$word"* ]]; then
            [[ $rest == *:* ]] && printf '%s\n' "${rest#*:}"
            return 0
        fi
    done
}

_qortlv()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=
    (( COMP_CWORD > 0 )) && previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $(_qortlv_argument_of "$previous") in
        byte)
            mapfile -t COMPREPLY < <(compgen -W "0x00 0xFF" -- "$current")
            return 0
            ;;
        count)
            return 0
            ;;
        file)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
            return 0
            ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "${_qortlv_options[*]%%:*}" -- "$current")
    else
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _qortlv qortlv
