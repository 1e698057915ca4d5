# shellcheck shell=bash
# A real Pacemaker pair: the appliance, and its partner in namespaces of its own (see partner).
# And DRBD, whose partner is never there.
ip netns add partner
ip link add ha0 type veth peer name ha1 netns partner
ip addr add 192.168.77.1/24 dev ha0 && ip link set ha0 up
ip -n partner addr add 192.168.77.2/24 dev ha1 && ip -n partner link set ha1 up
mkdir -p /etc/corosync
cat >/etc/corosync/corosync.conf <<'CONF'
totem {
  version: 2
  cluster_name: lab
  transport: udpu
}
nodelist {
  node {
    name: appliance
    nodeid: 1
    ring0_addr: 192.168.77.1
  }
  node {
    name: partner
    nodeid: 2
    ring0_addr: 192.168.77.2
  }
}
quorum {
  provider: corosync_votequorum
  two_node: 1
  wait_for_all: 0
}
logging {
  to_syslog: yes
}
CONF
# Nothing to fence with, and no long wait for a partner at the start. The higher admin_epoch makes
# it win over what the partner comes with.
option() { echo "<nvpair id=\"$1\" name=\"$1\" value=\"$2\"/>"; }
cat >/var/lib/pacemaker/cib/cib.xml <<CIB
<cib crm_feature_set="3.16.0" validate-with="pacemaker-3.9" epoch="1" num_updates="0" admin_epoch="1"><configuration>
<crm_config><cluster_property_set id="options">$(option dc-deadtime 3s; option stonith-enabled false)</cluster_property_set></crm_config>
<nodes/>
<resources><primitive id="service" class="ocf" provider="pacemaker" type="Dummy">
<operations><op id="watch" name="monitor" interval="5s" on-fail="block"/></operations></primitive></resources>
<constraints/></configuration><status/></cib>
CIB
chown hacluster:haclient /var/lib/pacemaker/cib/cib.xml && chmod 600 /var/lib/pacemaker/cib/cib.xml
export AWAIT_SECONDS=45
shows() { crm_mon -1 | grep -E "$1"; }

systemctl enable corosync pacemaker
blind "cluster that is enabled and does not run"
as_service
blind "cluster that is enabled and does not run, asked by who may not ask it"
asks vela-health --json
systemctl start corosync pacemaker
until_is 60 '*Started*' shows service
state "cluster whose partner is missing" cluster
ip netns exec partner unshare --uts --ipc --pid --mount --fork --kill-child bash "$LAB/partner" &
partner=$!
until_is 45 '*appliance*partner*' shows Online
until_is 20 '*Started*' shows service
gone
# A failure in the middle of the partner's arrival would be forgotten.
crm_resource --wait --timeout 60
# On whichever node it runs: the next look at it fails, and so it stays.
rm -f /run/Dummy-service.state
nsenter --mount --target "$(pgrep -P "$partner")" rm -f /run/Dummy-service.state
state "cluster with a failed resource" cluster
# Pacemaker lets only root and the members of its group ask; the service is neither.
serve
no_finding "cluster with a failed resource, a service that may not ask about it, and no collector"
collects cluster
state "cluster with a failed resource, seen by the collector and said by the service" cluster
crm_resource --cleanup --resource service
gone
quiet "cluster, seen by the collector"
collects nothing
serve_no_more
crm_standby --node partner -v on
state "cluster with a node in standby" cluster
crm_standby --node partner -v off
gone
kill -KILL "$partner"
state "cluster whose partner died" cluster
systemctl stop pacemaker corosync
blind "cluster that was stopped and is enabled"
systemctl disable corosync pacemaker
ip netns delete partner
ip link delete ha0
gone

disk=$(by LABSCSI1)
cat >/etc/drbd.d/lab.res <<CONF
resource lab {
  protocol C;
  on appliance { device /dev/drbd0; disk $disk; address 127.0.0.1:7789; meta-disk internal; }
  on partner { device /dev/drbd0; disk $disk; address 127.0.0.2:7789; meta-disk internal; }
}
CONF
yes yes | drbdadm create-md lab
drbdadm up lab
drbdadm primary --force lab
state "DRBD without its partner" cluster
drbdadm disconnect lab
state "DRBD, standing alone" cluster
drbdadm down lab
rmmod drbd
blind "DRBD that is configured and not up"
modprobe drbd
rm /etc/drbd.d/lab.res
wipefs -aq "$disk"
gone
