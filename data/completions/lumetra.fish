# fish completion for the programs of Lumetra. The options and their descriptions come from each program's --help, so
# that they are never out of date; only their values are listed here.

function __lumetra_options --argument-names program
    for line in ($program --help 2>/dev/null | string match --regex '^ +-.*' | string trim)
        set -l parts (string split --max 1 '  ' -- $line)
        for word in (string split ' ' -- $parts[1])
            set -l option (string match --regex '^--?[A-Za-z][a-z-]*' -- $word)
            and printf '%s\t%s\n' $option (string trim -- "$parts[2]")
        end
    end
end

function __lumetra_charts
    __fish_complete_path (commandline --current-token) | string match --regex '(?i).*(?:/|\.(?:bm[sel]|pms))(?:\t.*)?$'
end

function __lumetra_codes
    lumetra-check --explain all 2>/dev/null | string replace --filter '## ' ''
end

# What comes next: an option's value, or an option or file.
function __lumetra_after --description 'Whether the token before the cursor is one of these'
    contains -- (commandline --tokenize --cut-at-cursor)[-1] $argv
end

set -l numbers --at --seek --speed --seed --random --jobs -j --normalize --from --to --length --fade --fps --size
set -l files --path --wav --audio --video --strip --trace
set -l folders --png --output-dir
set -l words --format --fail-on --color --explain --select --ignore --bits --pacing --mode -m
set -l valued "__lumetra_after $numbers $files $folders $words"

for program in lumetra lumetra-check lumetra-convert lumetra-render lumetra-xa
    complete -c $program -f
    complete -c $program -n "not $valued; and string match --quiet -- '-*' (commandline --current-token)" \
        -a "(__lumetra_options $program)"
    complete -c $program -n "__lumetra_after $files $folders" -F
    test $program = lumetra-xa
    or complete -c $program -n "not $valued" -a '(__lumetra_charts)'
end
complete -c lumetra-check -n '__lumetra_after --format' -a 'text json sarif github'
complete -c lumetra-check -n '__lumetra_after --fail-on' -a 'error warning note'
complete -c lumetra-check -n '__lumetra_after --color' -a 'auto always never'
complete -c lumetra-check -n '__lumetra_after --explain --select --ignore' -a '(__lumetra_codes)'
complete -c lumetra-check -n '__lumetra_after --explain' -a all
complete -c lumetra-render -n '__lumetra_after --bits' -a '16 24'
complete -c lumetra-render -n '__lumetra_after --pacing' -a 'exact player'
complete -c lumetra-xa -n '__lumetra_after --mode -m' -a 'fine fast'
complete -c lumetra-xa -n "__fish_is_nth_token 1" -a 'encode decode info'
complete -c lumetra-xa -n "not __fish_is_nth_token 1; and not $valued" -F
