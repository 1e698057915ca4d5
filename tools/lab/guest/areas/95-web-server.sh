# shellcheck shell=bash
# The web server under systemd.
bad=/etc/nginx/conf.d/bad.conf
mkdir -p /var/log/nginx /var/lib/nginx
systemctl daemon-reload
systemctl start nginx
quiet "web server running"
echo 'server { listen 80; nonsense on; }' >$bad
systemctl reload nginx
state "web server with a configuration that it refuses" web_server
BY_HAND="rm $bad" as_told "line 1 of $bad"
gone
echo 'server { listen 80; nonsense on; }' >$bad
systemctl restart nginx
state "web server that cannot start" web_server
BY_HAND="rm $bad" as_told "line 1 of $bad"
gone
# Only root can test the configuration: nginx reads its keys and writes a log in that test. So the
# collector does, under its unit, and the service takes its word.
echo 'server { listen 81; }' >/etc/nginx/secret && chmod 600 /etc/nginx/secret
echo 'include /etc/nginx/secret;' >/etc/nginx/conf.d/secret.conf
systemctl reload nginx
serve
quiet "web server, asked about by the service"
echo 'server { listen 80; nonsense on; }' >$bad
systemctl reload nginx
no_finding "web server with a refused configuration that nobody has tested"
collects web_server
state "web server with a refused configuration, tested by the collector and said by the service" web_server
rm $bad
systemctl reload nginx
gone
systemctl kill -s KILL nginx
until_is 10 failed systemctl is-active nginx
no_finding "web server killed, with files that only root reads, configuration good"
collects nothing
serve_no_more
systemctl restart nginx
systemctl kill -s KILL nginx
until_is 10 failed systemctl is-active nginx
blind "web server killed, configuration good"
systemctl reset-failed nginx
systemctl stop nginx
quiet "web server switched off"
