# shellcheck shell=bash
# Sourced by the scripts: --help prints the comment at a script's head; what it does not know, a script
# refuses with status 2.
print_usage() { sed -n '2,/^[^#]/ s/^# \{0,1\}//p' "$0"; }

refuse() {  # argument...
  echo "${0##*/}: it takes no '$1'; ${0##*/} --help tells what it takes" >&2
  exit 2
}

help_if_asked() {  # the script's arguments
  local argument
  for argument in "$@"; do
    case $argument in
      -h | --help)
        print_usage
        exit 0
        ;;
    esac
  done
}

take_no_arguments() {  # the script's arguments
  help_if_asked "$@"
  [ $# = 0 ] || refuse "$1"
}
