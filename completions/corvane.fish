# Completion of corvane's command line for fish.

# The options in the form that is typed; the whole word is offered to those who have begun it. No blank follows a ':'.
function __corvane_options
    if string match -qr '^(-[abrs]?)?$' -- $argv[1]
        printf '%s\t%s\n' -a: 'a file to attach' -b: 'the text' -r: 'a recipient' -s: 'the subject'
    else
        printf '%s\t%s\n' -attachment: 'a file to attach' -body: 'the text' -recipient: 'a recipient' \
            -subject: 'the subject'
    end
    printf '%s\t%s\n' -nologo 'no logo in front of errors and help' -help 'the usage text'
end

function __corvane_words
    set -l word (commandline -ct | string unescape)
    set -l parts (string match -r '^(@(?!@)|[-/][Aa][^:]*:)(.*)$' -- $word)
    if set -q parts[3]
        __fish_complete_path $parts[3] | string replace -r '^' -- $parts[2]
    else if not string match -q '*:*' -- $word
        __corvane_options $word
    end
end

complete -c corvane -f -a '(__corvane_words)'
