#!/usr/bin/env bash
# ./dev run [--once] [--port N] [--receiver-port N] [--folder DIR] [--no-build]: the agent with its embedded back end, shown
# by the stock SNMP tools. --folder has what the demonstration keeps, run/ without; --no-build takes the programs that are
# there, in the folder that TALVIK_BIN_DIR names or in build/release/bin. The tests of the documents and record.sh use these.
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

once=false
build=true
port=1161
receiverPort=10162
folder="$root/run"
while [ $# -gt 0 ]; do
    case $1 in
        --once) once=true ;;
        --no-build) build=false ;;
        --port | --receiver-port | --folder)
            [ $# -ge 2 ] || misuse "$1 needs a value"
            case $1 in
                --port) port=$2 ;;
                --receiver-port) receiverPort=$2 ;;
                --folder) folder=$(realpath -m -- "$2") ;;
            esac
            shift
            ;;
        --port=*) port=${1#--port=} ;;
        *) misuse "usage: ./dev run [--once] [--port N] [--receiver-port N] [--folder DIR] [--no-build]" ;;
    esac
    shift
done
for number in "$port" "$receiverPort"; do
    if ! [[ $number =~ ^[1-9][0-9]{0,4}$ ]] || [ "$number" -gt 65535 ]; then
        misuse "\"$number\" is no port; give a number from 1 to 65535"
    fi
done

topology=1.3.6.1.4.1.99999.2.91.9.1
receivers=1.3.6.1.4.1.99999.2.91.10.4.1
alarms=1.3.6.1.4.1.99999.2.91.10.1.1
clearAlarm=1.3.6.1.4.1.99999.2.91.10.1.2
endpoint=127.0.0.1:$port
bin="$root/build/release/bin"
if ! $build; then
    bin=${TALVIK_BIN_DIR:-$bin}
    [ -x "$bin/talvik-agentd" ] || fail "there is no talvik-agentd in $bin; leave --no-build out"
fi
socket="$folder/state/agent.sock"
config="$folder/talvik-agentd.conf"
agentLog="$folder/talvik-agentd.log"
receiverLog="$folder/snmptrapd.log"
ctl=("$bin/talvikctl")
v3=(-v3 -l authPriv -u demo -a SHA-256 -x AES -On -r 1 -t 5)
secondsToStart=30
secondsToStop=10
secondsToReceive=20

portIsFree()
{
    python3 -c 'import socket, sys; socket.socket(socket.AF_INET, socket.SOCK_DGRAM).bind(("127.0.0.1", int(sys.argv[1])))' \
        "$port" 2>/dev/null
}

randomText() { python3 -c 'import secrets; print(secrets.token_urlsafe(24))'; }

# The user's passphrases are made once and stay in this folder, which only its owner can read.
writeDemoFiles()
{
    umask 077
    mkdir -p "$folder"/{client,receiver}/cert_indexes  # the tools tell when they make them
    chmod 700 "$folder"
    if [ ! -s "$folder/passphrases" ]; then
        printf 'AUTH=%s\nPRIV=%s\n' "$(randomText)" "$(randomText)" >"$folder/passphrases.new"
        mv "$folder/passphrases.new" "$folder/passphrases"
    fi
    # shellcheck source=/dev/null
    source "$folder/passphrases"

    cat >"$config" <<TEXT
# Made by ./dev run, for this machine only: from this machine, and nothing to write but the trap destinations and what
# clears alarms, over v3.
view talvikDemo included .1.3.6.1.2.1.1
view talvikDemo included .1.3.6.1.4.1.99999.2
view talvikDemo included .1.3.6.1.6.3.10.2.1
view talvikDemoWrite included .$receivers
view talvikDemoWrite included .$clearAlarm

# v2c: the community "public", accepted from loopback alone, read-only.
rocommunity public 127.0.0.1 -V talvikDemo

# v3: authenticated with SHA-256 and encrypted with AES.
createUser demo SHA-256 "$AUTH" AES "$PRIV"
group talvikDemoGroup usm demo
access talvikDemoGroup "" usm priv exact talvikDemo talvikDemoWrite none
TEXT
    # The stock tools read this one: it keeps the passphrases off command lines. No MIB is loaded unless -m names it.
    cat >"$folder/snmp.conf" <<TEXT
mibs :
defSecurityName demo
defSecurityLevel authPriv
defAuthType SHA-256
defAuthPassphrase $AUTH
defPrivType AES
defPrivPassphrase $PRIV
TEXT
}

# The stock tools with the demo's own configuration and nothing of the user's: client TOOL ARGUMENTS...
client()
{
    env SNMPCONFPATH="$folder" SNMP_PERSISTENT_DIR="$folder/client" MIBS="" "$@" </dev/null
}

# stopProcess NAME PID
stopProcess()
{
    [ -n "$2" ] || return 0
    kill -TERM "$2" 2>/dev/null || true
    local deadline=$((SECONDS + secondsToStop))
    while kill -0 "$2" 2>/dev/null; do
        if [ "$SECONDS" -ge "$deadline" ]; then
            echo "dev: $1 did not end within $secondsToStop seconds and is killed" >&2
            kill -KILL "$2" 2>/dev/null || true
            break
        fi
        sleep 0.1
    done
    wait "$2" 2>/dev/null || true
}

agentPid=
receiverPid=
raised=
stopAll()
{
    stopProcess "the agent" "$agentPid"
    agentPid=
    stopProcess snmptrapd "$receiverPid"
    receiverPid=
}

giveUp()
{
    printf 'dev: %s\n' "$*" >&2
    printf -- '---- the agent'"'"'s log (%s) ----\n' "$agentLog" >&2
    tail -n 60 "$agentLog" >&2 || true
    printf -- '---- end of the log ----\n' >&2
    exit 1
}

startAgent()
{
    "$bin/talvik-agentd" \
        --config "$config" \
        --device "$root/etc/talvik-device.xml" \
        --module "$bin/../lib/libSnmpTalvikMibModule.so" \
        --mib-dir "$root/mibs" \
        --state-dir "$folder/state" \
        --listen "udp:$endpoint" \
        --backend embedded \
        --trap-settings "$folder/talvik-traps.json" \
        --socket "$socket" \
        </dev/null >"$agentLog" 2>&1 9>&- &
    agentPid=$!
}

# Each question waits up to a second for its answer, so this loop needs no other pause.
waitForAnswer()
{
    local deadline=$((SECONDS + secondsToStart))
    until client snmpgetnext -v2c -c public -r 0 -t 1 "$endpoint" "$topology" >/dev/null 2>&1; do
        kill -0 "$agentPid" 2>/dev/null || giveUp "talvik-agentd ended instead of serving"
        [ "$SECONDS" -lt "$deadline" ] ||
            giveUp "talvik-agentd did not answer on udp:$endpoint within $secondsToStart seconds"
    done
}

# cellsBelow TABLE OUTPUT: how many cells of the table a walk's output has.
cellsBelow()
{
    grep -c "^\.\?${1//./\\.}\.[0-9.]* = [A-Za-z0-9-]*: " <<<"$2" || true
}

# showWalk TITLE TABLE TOOL ARGUMENTS...: shows a table and insists on the eight cells of a row.
showWalk()
{
    local title=$1 table=$2 output cells
    shift 2
    say "$title"
    output=$(client "$@" "$endpoint" "$table" 2>&1) || giveUp "the walk failed: $output"
    printf '%s\n' "$output"
    cells=$(cellsBelow "$table" "$output")
    [ "$cells" -ge 8 ] || giveUp "the walk of $table should show the 8 columns of a row, but shows $cells cells"
}

# The state is kept between runs, and with it the receivers that the user made.
makeReceiver()
{
    local output
    output=$(client snmpwalk "${v3[@]}" "$endpoint" "$receivers" 2>&1) || giveUp "the walk failed: $output"
    [ "$(cellsBelow "$receivers" "$output")" = 0 ] || return 0
    say "no trap destination yet; making one: snmpset -v3 ... RowStatus.1 i 4 Address.1 s 127.0.0.1 Port.1 u $receiverPort"
    client snmpset "${v3[@]}" "$endpoint" "$receivers.1.3.1" i 4 "$receivers.1.6.1" s 127.0.0.1 \
        "$receivers.1.2.1" u "$receiverPort" || giveUp "the trap destination could not be made (message above)"
}

# waitForTrap TEXT: until the receiver's log has the text.
waitForTrap()
{
    local deadline=$((SECONDS + secondsToReceive))
    until grep -qF -- "$1" "$receiverLog"; do
        kill -0 "$receiverPid" 2>/dev/null ||
            giveUp "snmptrapd ended; is udp port $receiverPort in use? Its log: $(tail -n 5 "$receiverLog")"
        [ "$SECONDS" -lt "$deadline" ] || giveUp "no \"$1\" came within $secondsToReceive seconds ($receiverLog)"
        sleep 0.1
    done
}

startReceiver()
{
    printf 'authCommunity log public\n' >"$folder/snmptrapd.conf"
    : >"$receiverLog"
    env SNMPCONFPATH="$folder" SNMP_PERSISTENT_DIR="$folder/receiver" MIBDIRS="$root/mibs:$root/tests/mib/stubs" \
        snmptrapd -f -n -Lf "$receiverLog" -m KEL-TALVIK-MIB -C -c "$folder/snmptrapd.conf" \
        "udp:127.0.0.1:$receiverPort" </dev/null >/dev/null 2>&1 9>&- &
    receiverPid=$!
    waitForTrap "NET-SNMP version"
}

# Only if one of the receivers is ours: the user may have others.
showAlarm()
{
    if ! client "${ctl[@]}" trap list --agent "udp:$endpoint" | grep -q "127\.0\.0\.1 *$receiverPort"; then
        say "no receiver at 127.0.0.1 port $receiverPort; no alarm is raised"
        return 0
    fi
    startReceiver
    say "a disk fails: talvikctl alarm raise 501010001 --param 0 --param 7 --param S3A1 --param 1 --severity major"
    raised=$("${ctl[@]}" alarm raise 501010001 --param 0 --param 7 --param S3A1 --param 1 --severity major \
        --socket "$socket") || giveUp "the alarm could not be raised (message above)"
    printf '%s\n' "$raised"
    waitForTrap "Enclosure 0, slot 7"
    say "what the stock snmptrapd received on 127.0.0.1 port $receiverPort (${receiverLog#"$root/"})"
    sed -n '/NET-SNMP version/d; p' "$receiverLog" | tr '\t' '\n'
}

# Clears the alarm that was raised; alarms of former runs, or the user's, stay.
showActiveAlarms()
{
    [ -n "$raised" ] || return 0
    local left
    showWalk "the active alarms: snmpbulkwalk -v3 ... $endpoint $alarms" "$alarms" snmpbulkwalk "${v3[@]}"
    say "a manager clears it: snmpset -v3 ... $endpoint $clearAlarm.0 u $raised"
    client snmpset "${v3[@]}" "$endpoint" "$clearAlarm.0" u "$raised" ||
        giveUp "the alarm could not be cleared (message above)"
    left=$(client snmpget "${v3[@]}" "$endpoint" "$alarms.1.9.$raised" 2>&1) || giveUp "no answer: $left"
    printf '%s\n' "$left"
    [[ $left == *"No Such Instance"* ]] || giveUp "the alarm is still there after it was cleared"
}

showReceivers()
{
    showWalk "the trap destinations: snmpwalk -v3 ... $endpoint $receivers" "$receivers" snmpwalk "${v3[@]}"
    say "the same as a table: talvikctl trap list --agent udp:$endpoint"
    client "${ctl[@]}" trap list --agent "udp:$endpoint" ||
        giveUp "talvikctl could not list the trap destinations (message above)"
}

showCommands()
{
    local v3="-v3 -l authPriv -u demo -a SHA-256 -x AES" place=${folder#"$root/"}
    local ctl="SNMPCONFPATH=$place build/release/bin/talvikctl trap"
    say "serving on udp:$endpoint; try, in another terminal:"
    cat <<TEXT
  cd $root
  snmpget -v2c -c public $endpoint $topology.1.8.1
  snmpbulkwalk -v2c -c public $endpoint 1.3.6.1.4.1.99999.2
  snmptable -v2c -c public -M mibs:tests/mib/stubs -m KEL-TALVIK-MIB $endpoint $topology
  snmptable -v2c -c public -M mibs:tests/mib/stubs -m KEL-TALVIK-MIB $endpoint $receivers
  snmptable -v2c -c public -M mibs:tests/mib/stubs -m KEL-TALVIK-MIB -Ci $endpoint $alarms
  SNMPCONFPATH=$place snmpset $v3 $endpoint $clearAlarm.0 u 1
  SNMPCONFPATH=$place snmpwalk $v3 $endpoint $topology
  $ctl list --agent udp:$endpoint
  $ctl add 192.0.2.10 --agent udp:$endpoint
  $ctl modify 1 --port 10163 --agent udp:$endpoint
  $ctl remove 1 --agent udp:$endpoint
  build/release/bin/talvikctl alarm raise 501010001 --param 0 --param 7 --param S3A1 --param 1 --socket $place/state/agent.sock
  build/release/bin/talvikctl alarm list --socket $place/state/agent.sock
  build/release/bin/talvikctl alarm clear 1 --socket $place/state/agent.sock
  build/release/bin/talvikctl trap status --socket $place/state/agent.sock
  tail -f $place/snmptrapd.log

SNMPCONFPATH=$place takes the passphrases from $place/snmp.conf. The agent's log is $place/talvik-agentd.log, its configuration
$place/talvik-agentd.conf.
TEXT
}

if $build; then
    setup
    configureAndBuild release talvik-agentd talvikctl SnmpTalvikMibModule
fi

writeDemoFiles
exec 9>"$folder/.lock"
flock -n 9 || fail "another ./dev run uses $folder; end it first (Ctrl-C in its terminal)"
portIsFree || fail "udp port $port of 127.0.0.1 is in use by another program; choose another: ./dev run --port 1162"

trap stopAll EXIT
trap 'exit 130' INT TERM HUP
startAgent
waitForAnswer

showWalk "SNMP v2c: snmpwalk -v2c -c public $endpoint $topology" "$topology" \
    snmpwalk -v2c -c public -On -r 1 -t 5
showWalk "SNMP v3, authenticated with SHA-256 and encrypted with AES: snmpwalk -v3 ... $endpoint $topology" "$topology" \
    snmpwalk "${v3[@]}"
makeReceiver
showReceivers
showAlarm
showActiveAlarms

if $once; then
    stopAll
    say "run: the topology row came over v2c and v3, the trap destinations over v3, and an alarm as a trap and as"
    echo "a row, until it was cleared"
    exit 0
fi

showCommands
trap 'say "stopping"; stopAll; exit 0' INT TERM HUP
printf '\nCtrl-C ends it.\n'
status=0
wait "$agentPid" || status=$?
agentPid=
giveUp "talvik-agentd ended by itself with status $status"
