The example for MQTT shows a household to a home automation: devices that it discovers, and their
states, all retained.

Needs: mosquitto mosquitto_pub mosquitto_sub

  $ . "$SOURCE/tests/cram/lib.sh"
  $ household
  $ utm_appctl activate on
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  $ free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
  $ port=$(free_port)
  $ printf '%s\n' "listener $port 127.0.0.1" 'allow_anonymous false' "password_file $PWD/passwords" 'user root' >broker.conf
  $ mosquitto_passwd -b -c passwords router secret
  $ mosquitto -c broker.conf >broker 2>&1 & broker=$!
  $ options="-h 127.0.0.1 -p $port -u router -P secret"
  $ until mosquitto_pub $options -t test -m test 2>/dev/null; do sleep 0.01; done
  $ mkdir -m 755 programs && install -m 755 "$SOURCE/docs/examples/mqtt" programs
  $ printf '%s\n' '-h 127.0.0.1' "-p $port" '-u router' '-P secret' >programs/mosquitto_pub
  $ mosquitto_sub $options -t 'utm/event' -F %p >events & subscriber=$!
  $ start_watch --all --exec programs
  $ await_told 7 >/dev/null
  $ heard() { until [ "$(wc -l <events)" = $1 ]; do sleep 0.01; done; }
  $ heard 7
  $ states() { mosquitto_sub $options --retained-only -t "$@" -F '%t %p' 2>/dev/null | sort; }
  $ states 'utm/#' -C 7
  utm/daemon ON
  utm/limits ON
  utm/person/3/app/305 ON
  utm/person/3/app/306 OFF
  utm/person/3/internet ON
  utm/person/3/left 120
  utm/person/3/used 0
  $ states 'homeassistant/#' -C 5 | while read -r topic document; do
  >   echo "$topic"
  >   echo "$document" | python3 -m json.tool --sort-keys
  > done
  homeassistant/binary_sensor/utm_3/app_305/config
  {
      "availability_topic": "utm/daemon",
      "device": {
          "identifiers": [
              "utm_3"
          ],
          "name": "Mia"
      },
      "device_class": "connectivity",
      "name": "video",
      "payload_available": "ON",
      "payload_not_available": "OFF",
      "state_topic": "utm/person/3/app/305",
      "unique_id": "utm_3_app_305"
  }
  homeassistant/binary_sensor/utm_3/app_306/config
  {
      "availability_topic": "utm/daemon",
      "device": {
          "identifiers": [
              "utm_3"
          ],
          "name": "Mia"
      },
      "device_class": "connectivity",
      "name": "games",
      "payload_available": "ON",
      "payload_not_available": "OFF",
      "state_topic": "utm/person/3/app/306",
      "unique_id": "utm_3_app_306"
  }
  homeassistant/binary_sensor/utm_3/internet/config
  {
      "availability_topic": "utm/daemon",
      "device": {
          "identifiers": [
              "utm_3"
          ],
          "name": "Mia"
      },
      "device_class": "connectivity",
      "name": "Internet",
      "payload_available": "ON",
      "payload_not_available": "OFF",
      "state_topic": "utm/person/3/internet",
      "unique_id": "utm_3_internet"
  }
  homeassistant/sensor/utm_3/left/config
  {
      "availability_topic": "utm/daemon",
      "device": {
          "identifiers": [
              "utm_3"
          ],
          "name": "Mia"
      },
      "device_class": "duration",
      "name": "Left today",
      "payload_available": "ON",
      "payload_not_available": "OFF",
      "state_class": "measurement",
      "state_topic": "utm/person/3/left",
      "unique_id": "utm_3_left",
      "unit_of_measurement": "min"
  }
  homeassistant/sensor/utm_3/used/config
  {
      "availability_topic": "utm/daemon",
      "device": {
          "identifiers": [
              "utm_3"
          ],
          "name": "Mia"
      },
      "device_class": "duration",
      "name": "Used today",
      "payload_available": "ON",
      "payload_not_available": "OFF",
      "state_class": "total_increasing",
      "state_topic": "utm/person/3/used",
      "unique_id": "utm_3_used",
      "unit_of_measurement": "min"
  }

States follow the events, in their order.

  $ use 120 305=45
  $ told 3
  2030-01-01 12:01:00  Mia is cut off: 2h used
  2030-01-01 12:01:00  video is blocked for Mia
  2030-01-01 12:01:00  Mia has used 2h, 0m left
  $ heard 10
  $ states 'utm/#' -C 7
  utm/daemon ON
  utm/limits ON
  utm/person/3/app/305 OFF
  utm/person/3/app/306 OFF
  utm/person/3/internet OFF
  utm/person/3/left 0
  utm/person/3/used 120
  $ tail -n 1 events
  {"event":"used","time":1893495660,"text":"Mia has used 2h, 0m left","profile":3,"name":"Mia","today":120,"enabled":true,"limit":120,"extend":0,"left":0,"cut_off":true}

Who leaves the household leaves nothing behind.

  $ echo '{}' >"$UTM_APPCTL_HOUSEHOLD"
  $ utm_appctl activate off
  $ told 4
  2030-01-01 12:01:00  limits are off
  2030-01-01 12:01:00  video has no rule for Mia
  2030-01-01 12:01:00  games has no rule for Mia
  2030-01-01 12:01:00  Mia is no longer in the household file
  $ heard 14
  $ states '#' -W 1
  utm/daemon ON
  utm/limits OFF
  $ end_watch

A broker that does not know the router is reported.

  $ echo '-P wrong' >>programs/mosquitto_pub
  $ start_watch --all --exec programs
  $ await_told 2 >/dev/null
  $ until grep -q status messages; do sleep 0.01; done
  $ end_watch >/dev/null
  $ head -n 3 messages
  Connection error: Connection Refused: not authorised.
  Error: The connection was refused.
  utm_appctl: mqtt ended with status 5 for the event "back"
  $ kill $subscriber $broker
