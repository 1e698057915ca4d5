# Completion of vela-health for bash.
_vela_health() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local options="--platform --module --scenario --lang --json --help --version"
  local scenarios=/usr/share/vela-systemhealth/scenarios
  case $before in
    --platform) mapfile -t COMPREPLY < <(compgen -W "linux simulator" -f -- "$word") ;;
    --lang) mapfile -t COMPREPLY < <(compgen -W "en de fr es ja zh-CN" -- "$word") ;;
    --module) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    --scenario) mapfile -t COMPREPLY < <(compgen -W "$(ls "$scenarios" 2>/dev/null)" -d -- "$word") ;;
    --listen | --port | --host-name) COMPREPLY=() ;;
    *)
      [[ " ${COMP_WORDS[*]} " != *" serve "* ]] || options+=" --listen --port --allow-remote --host-name --demo"
      mapfile -t COMPREPLY < <(compgen -W "status explain diff findings serve $options" -- "$word")
      ;;
  esac
}
complete -F _vela_health vela-health
