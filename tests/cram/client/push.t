The example of a push service sends what people want to know to a topic's address.

Needs: curl

  $ . "$SOURCE/tests/cram/lib.sh"
  $ household
  $ utm_appctl activate on
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  $ cat >server.py <<'SERVER'
  > import http.server
  > class Topic(http.server.BaseHTTPRequestHandler):
  >     def do_POST(self):
  >         text = self.rfile.read(int(self.headers["Content-Length"])).decode()
  >         with open("posts", "a") as posts:
  >             for name in ("Title", "Authorization", "Content-Type"):
  >                 print(name, self.headers[name], sep=": ", file=posts)
  >             print(self.path, text, "", sep="\n", file=posts)
  >         self.send_response(503 if "busy" in self.path else 200)
  >         self.end_headers()
  >     def log_message(self, *arguments):
  >         pass
  > server = http.server.HTTPServer(("127.0.0.1", 0), Topic)
  > with open("port", "w") as port:
  >     print(server.server_port, file=port)
  > server.serve_forever()
  > SERVER
  $ : >posts
  $ python3 server.py & server=$!
  $ until [ -s port ]; do sleep 0.01; done
  $ mkdir -m 755 programs && install -m 755 "$SOURCE/docs/examples/push" programs
  $ echo "url=http://127.0.0.1:$(cat port)/our-family" >programs/push.conf
  $ start_watch --all --exec programs
  $ await_told 7 >/dev/null
  $ posted() { until [ "$(grep -c ^/ posts)" = $1 ]; do sleep 0.01; done; }
  $ posted 4
  $ cat posts
  Title: Internet time
  Authorization: None
  Content-Type: text/plain; charset=utf-8
  /our-family
  the daemon answers
  
  Title: Mia
  Authorization: None
  Content-Type: text/plain; charset=utf-8
  /our-family
  Mia is let in again: 2h left
  
  Title: Mia
  Authorization: None
  Content-Type: text/plain; charset=utf-8
  /our-family
  video is released for Mia
  
  Title: Mia
  Authorization: None
  Content-Type: text/plain; charset=utf-8
  /our-family
  games is blocked for Mia
  

Others may want less, under a token; names are quoted, and never taken for an option of curl.

  $ echo "token=secret events='left cut-off'" >>programs/push.conf
  $ sed -i 's/Mia/@M\\"ia/' "$UTM_APPCTL_HOUSEHOLD"
  $ : >posts
  $ use 110
  $ told 2
  2030-01-01 12:01:00  @M"ia has 10m left
  2030-01-01 12:01:00  @M"ia has used 1h50m, 10m left
  $ posted 1
  $ cat posts
  Title: @M"ia
  Authorization: Bearer secret
  Content-Type: text/plain; charset=utf-8
  /our-family
  @M"ia has 10m left
  

A service that is busy, or is not there, is reported.

  $ echo "url=http://127.0.0.1:$(cat port)/busy" >>programs/push.conf
  $ use 10
  $ told 2
  2030-01-01 12:02:00  @M"ia is cut off: 2h used
  2030-01-01 12:02:00  @M"ia has used 2h, 0m left
  $ until grep -q status messages; do sleep 0.01; done
  $ kill $server
  $ end_watch
  curl: (22) The requested URL returned error: 503
  utm_appctl: push ended with status 22 for the event "cut-off"
