# fish completion of corvane(1)

complete -c corvane -f
complete -c corvane -s h -l help -d 'Show help and exit'
complete -c corvane -l version -d 'Show the version and exit'
complete -c corvane -l defaults -r -F -d 'Use this settings file in place of your own'
complete -c corvane -n 'not string match -q -- "-*" (commandline -ct)' -a '(__fish_complete_directories)'
