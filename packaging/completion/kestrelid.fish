# fish completion for kestrelid
complete -c kestrelid -f
set -l commands validate text zone watch doctor

complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -a validate -d 'Judge pictures'
complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -a text -d 'Weigh text that was already recognised'
complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -a zone -d 'Read machine-readable zones'
complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -a watch -d 'Look through a camera, and take a photo'
complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -a doctor -d 'Say what this machine offers'
complete -c kestrelid -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c kestrelid -s h -l help -d 'Print help'

complete -c kestrelid -n "__fish_seen_subcommand_from validate text zone" -F
complete -c kestrelid -n "__fish_seen_subcommand_from $commands" -l json -d 'JSON lines'
complete -c kestrelid -n "__fish_seen_subcommand_from validate zone watch doctor" -l resources -x -a '(__fish_complete_directories)' -d 'Folder of the models'
complete -c kestrelid -n "__fish_seen_subcommand_from validate" -l no-text -d 'Leave personal text out of the JSON'
complete -c kestrelid -n "__fish_seen_subcommand_from validate" -s j -l jobs -x -a '1 2 4 8' -d 'Pictures judged at once'
complete -c kestrelid -n "__fish_seen_subcommand_from validate" -l effort -x -a 'complete verdict' -d 'How much is read'
complete -c kestrelid -n "__fish_seen_subcommand_from validate" -l annotate -x -a '(__fish_complete_directories)' -d 'Folder for copies with drawn outlines'
complete -c kestrelid -n "__fish_seen_subcommand_from zone" -l text -d 'The files hold recognised text'
complete -c kestrelid -n "__fish_seen_subcommand_from zone watch" -l as-of -x -a '(date +%F)' -d 'The day that tells centuries'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l list -d 'Name the cameras and end'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l camera -r -F -d 'A camera by name, or a file'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l seconds -x -a '1 5 10 60' -d 'End after so long'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l zone -d 'Read the zone of the page in view'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l photo -r -F -d 'Take a photo, write it, and end'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l after -x -a '1 5 10 60' -d 'Take the photo so long after the start'
complete -c kestrelid -n "__fish_seen_subcommand_from watch" -l force -d 'Let the photo replace a file'
