The client of docs/protocol.md prints what the page says it prints.

  $ page="$SOURCE/docs/protocol.md"
  $ sed -n '/^```python$/,/^```$/p' "$page" | sed '1d;$d' >mine.py
  $ sed -n '/^    \$ scripts\/sandbox python3 mine.py$/,/^$/s/^    //p' "$page" | sed 1d >expected
  $ wc -l <expected
  4
  $ python3 mine.py >printed
  $ cmp printed expected

More than one request on a connection: the first is answered, and then there is no end but an error.

  $ cat >several.py <<'PY'
  > import socket
  > def told(call):
  >     try: return str(call())
  >     except OSError as error: return type(error).__name__
  > def connect():
  >     daemon = socket.socket(socket.AF_UNIX)
  >     daemon.connect("/dev/utm_app_config_socket")
  >     return daemon
  > def read(daemon):
  >     return told(lambda: len(daemon.recv(832, socket.MSG_WAITALL)))
  > ping = bytes(136)
  > for text in ping, ping + ping, ping + b"\0":
  >     daemon = connect()
  >     daemon.send(text)
  >     print(len(text), "bytes:", read(daemon), read(daemon))
  > daemon = connect()
  > daemon.send(ping)
  > print("one:", read(daemon), read(daemon), told(lambda: daemon.send(ping)))
  > PY
  $ python3 several.py
  136 bytes: 832 0
  272 bytes: 832 ConnectionResetError
  137 bytes: 832 ConnectionResetError
  one: 832 0 BrokenPipeError

The one in C asks for what profile 3 has used this week.

  $ sed -n '/^```c$/,/^```$/p' "$page" | sed '1d;$d' >client.c
  $ cc -std=c11 -D_DEFAULT_SOURCE -Wall -Wextra -Werror -o client client.c
  $ utm_appctl profile del 3
  $ ./client
  [1]
  $ utm_appctl profile add 3
  $ utm_appctl device add 3 00:00:5E:00:53:1A 00:00:5E:00:53:3A
  utm_appctl: note: 00:00:5E:00:53:1A is a device of Mia, too; what blocks either of them blocks it
  $ tick 90
  $ ./client
  305: 83 minutes
  12: 20 minutes
  $ utm_appctl usage 3 --week 0
  Ana
  APPLICATION  MINUTES   TIME
  video             83  1h23m
  mail              20    20m
  total            103  1h43m
  $ daemon stop
  $ ./client
  [4]
