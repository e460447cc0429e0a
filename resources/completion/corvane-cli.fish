# fish completion of corvane-cli(1)

set -l commands scan list info check trash verify backup sample
set -l of_selection '__fish_seen_subcommand_from scan list check'
set -l of_scan '__fish_seen_subcommand_from scan'
set -l of_trash '__fish_seen_subcommand_from trash'
set -l of_verify '__fish_seen_subcommand_from verify'
set -l of_backup '__fish_seen_subcommand_from backup'
set -l of_sample '__fish_seen_subcommand_from sample'

complete -c corvane-cli -f
complete -c corvane-cli -s h -l help -d 'Show help and exit'
complete -c corvane-cli -n __fish_use_subcommand -l version -d 'Show the version and exit'

complete -c corvane-cli -n __fish_use_subcommand -a scan -d 'Replace RAW photos by JPEG copies'
complete -c corvane-cli -n __fish_use_subcommand -a list -d 'List photos, one line each'
complete -c corvane-cli -n __fish_use_subcommand -a info -d 'Say what is in a library and whether it is sound'
complete -c corvane-cli -n __fish_use_subcommand -a check -d 'Try every photo without writing'
complete -c corvane-cli -n __fish_use_subcommand -a trash -d 'List the trash, put photos back, or empty it'
complete -c corvane-cli -n __fish_use_subcommand -a verify -d 'Compare databases, sidecars, catalogues and files'
complete -c corvane-cli -n __fish_use_subcommand -a backup -d 'Make, list or restore copies of the databases'
complete -c corvane-cli -n __fish_use_subcommand -a sample -d 'Write a small library to try the program on'

complete -c corvane-cli -n "__fish_seen_subcommand_from $commands" -a '(__fish_complete_directories)'
complete -c corvane-cli -n "__fish_seen_subcommand_from $commands" -l quiet -d 'Show no progress'
complete -c corvane-cli -n "__fish_seen_subcommand_from $commands" -l defaults -r -F -d 'Settings file in place of your own'
complete -c corvane-cli -n '__fish_seen_subcommand_from scan list info check trash verify backup' -l volume -x -d 'Where a disk of referenced masters is here'
complete -c corvane-cli -n '__fish_seen_subcommand_from list info check trash verify backup' -l json -d 'Answer with a JSON document'
complete -c corvane-cli -n '__fish_seen_subcommand_from scan trash verify backup' -l after-crash -d 'Write also to a sound library that iPhoto did not close properly'

complete -c corvane-cli -n $of_selection -l all -d 'All photos'
complete -c corvane-cli -n $of_selection -l raw -d 'Photos with a RAW master that are no converted original'
complete -c corvane-cli -n '__fish_seen_subcommand_from scan list check trash' -l id -x -d 'The photo of this id'
complete -c corvane-cli -n $of_selection -l roll -x -d 'Photos of this event'
complete -c corvane-cli -n $of_selection -l album -x -d 'Photos of this album'
complete -c corvane-cli -n $of_selection -l keyword -x -d 'Photos with this keyword'
complete -c corvane-cli -n $of_selection -l present -d 'Leave out photos whose master is missing or unreadable'

complete -c corvane-cli -n $of_scan -l dry-run -d 'Say what would become of each photo; write nothing'
complete -c corvane-cli -n $of_scan -l report -r -F -d 'Write a JSON document about each photo'
complete -c corvane-cli -n $of_scan -l quality -x -d 'JPEG quality, 0 to 1'
complete -c corvane-cli -n $of_scan -l scale -x -a '1 0.75 0.5 0.25' -d 'Size of the copies'
complete -c corvane-cli -n $of_scan -l long -x -d 'Pixels of the long side'
complete -c corvane-cli -n $of_scan -l short -x -d 'Pixels of the short side'
complete -c corvane-cli -n $of_scan -l albums -d 'One album per event'
complete -c corvane-cli -n $of_scan -l no-albums -d 'One album for all copies'
complete -c corvane-cli -n $of_scan -l tag -d 'Tag originals and copies with keywords'
complete -c corvane-cli -n $of_scan -l no-tag -d 'Tag nothing'
complete -c corvane-cli -n $of_scan -l trash -d "Move converted originals to the library's trash"
complete -c corvane-cli -n $of_scan -l no-trash -d 'Leave converted originals where they are'
complete -c corvane-cli -n $of_scan -l originals -d 'Convert the original files'
complete -c corvane-cli -n $of_scan -l displayed -d 'Convert the images that iPhoto displays'

complete -c corvane-cli -n $of_trash -l restore -d 'Put photos back'
complete -c corvane-cli -n $of_trash -l empty -d 'Delete the photos for good'
complete -c corvane-cli -n $of_trash -l yes -d 'Do not ask before deleting'

complete -c corvane-cli -n $of_verify -l repair -d 'Mend what can be mended without a choice'

complete -c corvane-cli -n $of_backup -l list -d 'List the copies that there are'
complete -c corvane-cli -n $of_backup -l restore -x -d 'Put the copy of this date in place'

complete -c corvane-cli -n $of_sample -l photos -x -d 'Number of RAW photos'
complete -c corvane-cli -n $of_sample -l megapixels -x -d 'Size of each RAW photo'
