A report of one person is a page about today, of whom and whatever the household file names. The
daemon is asked for it: nothing is exported, and limits may be off.

  $ . "$SOURCE/tests/cram/lib.sh"
  $ household
  $ add_mia && utm_appctl limit set 3 2h && utm_appctl limit enable 3
  utm_appctl: note: limits are off for everybody; turn them on with activate on
  $ utm_appctl profile add 4 && utm_appctl device add 4 02:00:00:00:00:0B
  $ page() { utm_appctl report --person "$@" >page && sed -n '/<body>/,$p' page | sed '/<svg class="chart"/,/^<\/svg>/d'; }
  $ page mia
  <body>
  <header>
  <h1><bdi>Mia</bdi></h1>
  <p class="soft">Tuesday, 1 January 2030, 12:00</p>
  </header>
  <main>
  <section>
  <div class="head"><h2>Today</h2><span class="badge">Go ahead</span></div>
  <p class="today"><strong title="0 min">0m</strong> <span>used today</span> <span class="soft">no limit</span></p>
  </section>
  <section>
  <h3>Thirty days and today</h3>
  <p class="soft">No use in these days.</p>
  </section>
  </main>
  </body>
  </html>

Limits are on, some of the day is used, and a bonus was given.

  $ utm_appctl activate on
  $ use 45 305=20 307=100
  $ sleep_over
  $ utm_appctl extend add 3 30m
  $ use 60 305=50 306=1
  $ utm_appctl debug on && forget
  $ page MIA
  <body>
  <header>
  <h1><bdi>Mia</bdi></h1>
  <p class="soft">Wednesday, 2 January 2030, 12:03</p>
  </header>
  <main>
  <section>
  <div class="head"><h2>Today</h2><span class="badge">Go ahead</span></div>
  <p class="today"><strong title="90 min">1h30m</strong> <span>left today</span> <span class="soft">1h of 2h30m used, with a bonus of 30m</span></p>
  <svg class="meter" role="img" aria-label="60 of 150 minutes used today"><title>60 of 150 minutes used today</title><rect class="track" width="100%" height="100%" rx="6"/><rect class="now" width="40.0%" height="100%" rx="6"/></svg>
  </section>
  <section>
  <h2>Applications</h2>
  <table class="rules">
  <thead><tr><th scope="col">Application</th><th scope="col">Left</th><th scope="col">Used</th></tr></thead>
  <tbody>
  <tr><th scope="row"><bdi>video</bdi><svg class="meter" role="img" aria-label="50 of 45 minutes used today"><title>50 of 45 minutes used today</title><rect class="track" width="100%" height="100%" rx="6"/><rect class="over" width="100.0%" height="100%" rx="6"/></svg>
  </th><td title="0 min">0m</td><td>50m of 45m</td></tr>
  <tr><th scope="row"><bdi>games</bdi></th><td>blocked</td><td></td></tr>
  </tbody>
  </table>
  </section>
  <section>
  <h3>Thirty days and today</h3>
  <p class="soft">The applications\xe2\x80\x99 minutes of each day, added together. The busiest: Tue 1 Jan, 2h.</p> (esc)
  </section>
  </main>
  </body>
  </html>
  $ log | grep -c 'cmd type='
  7
  $ log | grep 'cmd type=51'
  [1]
  $ utm_appctl debug off
  $ grep -e '<title>M' -e 'Tue 1 Jan' page
  <title>Mia</title>
  <svg class="chart" viewBox="0 0 340 138" role="img" aria-label="Bar chart of Mon 3 Dec to today. The busiest day: Tue 1 Jan, 2h.">
  <rect class="use" x="322.5" y="8.0" width="7.4" height="110.0" rx="1"><title>Tue 1 Jan: 2h (120 min)</title></rect>
  <p class="soft">The applications\xe2\x80\x99 minutes of each day, added together. The busiest: Tue 1 Jan, 2h.</p> (esc)
  $ use 100
  $ page 3 | grep -e badge -e left
  <div class="head"><h2>Today</h2><span class="badge stop">No more today</span></div>
  <p class="today"><strong title="0 min">0m</strong> <span>left today</span> <span class="soft">2h40m of 2h30m used, with a bonus of 30m</span></p>

Of a usage file it is the same, but for what the file does not tell.

  $ utm_appctl export /tmp/usage.json
  $ utm_appctl report /tmp/usage.json --person mia -s /tmp/nobody | diff page - | grep '^[<>]'
  < <h2>Applications</h2>
  < <table class="rules">
  < <thead><tr><th scope="col">Application</th><th scope="col">Left</th><th scope="col">Used</th></tr></thead>
  < <tbody>
  < <tr><th scope="row"><bdi>video</bdi><svg class="meter" role="img" aria-label="50 of 45 minutes used today"><title>50 of 45 minutes used today</title><rect class="track" width="100%" height="100%" rx="6"/><rect class="over" width="100.0%" height="100%" rx="6"/></svg>
  < </th><td title="0 min">0m</td><td>50m of 45m</td></tr>
  < <tr><th scope="row"><bdi>games</bdi></th><td>blocked</td><td></td></tr>
  < </tbody>
  < </table>
  < </section>
  < <section>

Nothing is said of others: neither numbers, nor addresses, nor what they use.

  $ grep -c -e 307 -e 02:00 -e 'Profile' page
  0
  [1]

A name has no power over the page. Somebody without a rule, a limit or a name has a page, too.

  $ sed -i 's/Mia/<b>M\&ia/; s/video/"vid"/' "$UTM_APPCTL_HOUSEHOLD" 2>/dev/null
  $ sed -i 's/""vid""/"\\"vid<\/td>\\""/' "$UTM_APPCTL_HOUSEHOLD"
  $ page 3 | grep -e bdi
  <h1><bdi>&lt;b&gt;M&amp;ia</bdi></h1>
  <tr><th scope="row"><bdi>&quot;vid&lt;/td&gt;&quot;</bdi><svg class="meter" role="img" aria-label="50 of 45 minutes used today"><title>50 of 45 minutes used today</title><rect class="track" width="100%" height="100%" rx="6"/><rect class="over" width="100.0%" height="100%" rx="6"/></svg>
  <tr><th scope="row"><bdi>games</bdi></th><td>blocked</td><td></td></tr>
  $ page 4
  <body>
  <header>
  <h1><bdi>4</bdi></h1>
  <p class="soft">Wednesday, 2 January 2030, 12:04</p>
  </header>
  <main>
  <section>
  <div class="head"><h2>Today</h2><span class="badge">Go ahead</span></div>
  <p class="today"><strong title="160 min">2h40m</strong> <span>used today</span> <span class="soft">no limit</span></p>
  </section>
  <section>
  <h3>Thirty days and today</h3>
  <p class="soft">The applications\xe2\x80\x99 minutes of each day, added together. The busiest: Tue 1 Jan, 2h.</p> (esc)
  </section>
  </main>
  </body>
  </html>

With --output it is put in the place of the old page, and a page that cannot be made leaves it.

  $ utm_appctl report --person 4 --output kept.html && ls
  kept.html
  page
  $ utm_appctl report --person 9 --output kept.html
  utm_appctl: the daemon does not know 9
  [1]
  $ utm_appctl report --person mai
  utm_appctl: "mai" is nobody's name
  Give a whole number, or a name in the household
  [2]
  $ utm_appctl report --person mia /tmp/none
  utm_appctl: "mia" is nobody's name
  Give a whole number, or a name in the household
  [2]
  $ utm_appctl report --person 9 /tmp/usage.json
  utm_appctl: /tmp/usage.json has nothing about 9
  [2]
  $ utm_appctl report --person 4 -s /tmp/nobody --output kept.html
  utm_appctl: cannot reach the daemon at /tmp/nobody (No such file or directory): is it running? Use -s for another socket
  [3]
  $ ls && tail -n 1 kept.html
  kept.html
  page
  </html>
  $ utm_appctl report --person 4 --json | head -c 26 && echo
  {"page":"<!DOCTYPE html>\n

The page of everybody has their names.

  $ utm_appctl report | grep '<h2>'
  <div class="head"><h2><bdi>&lt;b&gt;M&amp;ia</bdi></h2><span class="badge stop">Blocked now</span></div>
  <div class="head"><h2>Profile 4</h2><span class="badge">Not blocked</span></div>
  <h2>The whole router</h2>
