# Completion of vela-health for bash.
_vela_health() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} each command=
  local options="--platform --module --scenario --lang --json --json=full --help --version"
  local words="--lang --json --help"
  local scenarios=/usr/share/vela-systemhealth/scenarios
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $each in
      status | check | explain | diff | findings | capture | report | metrics | notify | serve) command=$each ;;
    esac
  done
  case $before in
    --platform) mapfile -t COMPREPLY < <(compgen -W "linux simulator" -f -- "$word") && return ;;
    --lang) mapfile -t COMPREPLY < <(compgen -W "en de fr es ja zh-CN" -- "$word") && return ;;
    --module) mapfile -t COMPREPLY < <(compgen -f -- "$word") && return ;;
    --hooks | --state) mapfile -t COMPREPLY < <(compgen -d -- "$word") && return ;;
    --scenario) mapfile -t COMPREPLY < <(compgen -W "$(ls "$scenarios" 2>/dev/null)" -d -- "$word") && return ;;
    --listen | --port | --host-name | --why | --timeout) COMPREPLY=() && return ;;
  esac
  case $command in
    check) mapfile -t COMPREPLY < <(compgen -W "--platform --module --scenario --lang --help" -- "$word") ;;
    diff) mapfile -t COMPREPLY < <(compgen -W "$(ls "$scenarios" 2>/dev/null) --module $words" -f -- "$word") ;;
    findings) mapfile -t COMPREPLY < <(compgen -W "--markdown $words" -- "$word") ;;
    capture) mapfile -t COMPREPLY < <(compgen -W "--why --real-names $options" -d -- "$word") ;;
    report) mapfile -t COMPREPLY < <(compgen -W "$options" -f -- "$word") ;;
    metrics) mapfile -t COMPREPLY < <(compgen -W "--platform --module --scenario --lang --help" -f -- "$word") ;;
    notify) mapfile -t COMPREPLY < <(compgen -W "--hooks --state --timeout --test --platform --module --scenario --lang --help" -- "$word") ;;
    serve) mapfile -t COMPREPLY < <(compgen -W "--listen --port --allow-remote --host-name --demo --platform --module --scenario --help" -- "$word") ;;
    '') mapfile -t COMPREPLY < <(compgen -W "status check explain diff findings capture report metrics notify serve help $options" -- "$word") ;;
    *) mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word") ;;
  esac
}
complete -F _vela_health vela-health
