Where nobody listens there is no daemon.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ daemon stop
  $ utm_appctl ping
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ utm_appctl ping -s /tmp/none
  utm_appctl: cannot reach the daemon at /tmp/none (No such file or directory): is it running? Use -s for another socket
  [3]
  $ utm_appctl ping --socket=/dev/null/none
  utm_appctl: cannot reach the daemon at /dev/null/none (Not a directory): is it running? Use -s for another socket
  [3]
  $ : >/tmp/file
  $ utm_appctl usage 3 -j -s /tmp/file
  utm_appctl: cannot reach the daemon at /tmp/file (Connection refused): is it running? Use -s for another socket
  {"error":"cannot reach the daemon at \/tmp\/file (Connection refused): is it running? Use -s for another socket"}
  [3]
  $ start_fake_server
  $ kill -9 $fake_server
  $ wait $fake_server 2>/dev/null
  [137]
  $ utm_appctl ping -s $fake
  utm_appctl: cannot reach the daemon at /tmp/fake_socket (Connection refused): is it running? Use -s for another socket
  [3]

A path is not cut.

  $ longest=/tmp/$(letters 102)
  $ utm_appctl ping -s "$longest"
  utm_appctl: cannot reach the daemon at /tmp/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa (No such file or directory): is it running? Use -s for another socket
  [3]
  $ utm_appctl ping -s "${longest}a"
  utm_appctl: /tmp/aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa is too long for a socket path: the system allows 107 characters
  [2]
  $ utm_appctl ping -s ''
  utm_appctl: the socket path is empty: give it after -s
  [2]

A report leaves no file behind.

  $ mkdir /tmp/here
  $ TMPDIR=/tmp/here utm_appctl report
  utm_appctl: cannot reach the daemon at /dev/utm_app_config_socket (No such file or directory): is it running? Use -s for another socket
  [3]
  $ ls -A /tmp/here
