#pragma once
/// How the page looks. It names nothing outside itself: no font, no image, no other sheet.
///
/// Text has at least 4.5 times the contrast of what is behind it, in both colour schemes, and no
/// meaning hangs on a colour alone.

inline constexpr char ctl_page_style[] = R"(
:root { color-scheme: light dark;
  --ground: #f4f2ec; --card: #fffefb; --line: #dedacf; --ink: #22302e; --soft: #5a6664;
  --use: #2f7f78; --today: #b4630f; --track: #e7e4da; --stop: #a5281f; --fine: #2b6a44; }
@media (prefers-color-scheme: dark) { :root {
  --ground: #14181a; --card: #1d2325; --line: #343d3f; --ink: #e9ede9; --soft: #a3b0ad;
  --use: #5fb5ab; --today: #f0a75a; --track: #333c3e; --stop: #ff9a8c; --fine: #8fd3a6; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 68rem; padding: 1.25rem .75rem 2rem; color: var(--ink);
  background: var(--ground); font: 1rem/1.45 system-ui, sans-serif; overflow-wrap: anywhere; }
h1, h2, h3, p, dl, dd, ul { margin: 0; }
h1 { font-size: 1.75rem; line-height: 1.2; letter-spacing: -.01em; }
h2 { font-size: 1.3rem; line-height: 1.3; }
h3 { font-size: .95rem; margin: 1.25rem 0 .35rem; }
header, footer { padding: 0 .25rem; }
footer, .soft, dt, th, summary { color: var(--soft); }
footer, .soft, summary { font-size: .875rem; }
footer p { margin-top: .4rem; }
section { margin: 1rem 0; padding: 1rem .875rem; background: var(--card); border: 1px solid var(--line);
  border-radius: .75rem; }
.head { display: flex; flex-wrap: wrap; gap: .25rem .75rem; align-items: center;
  justify-content: space-between; }
.badge { padding: .1rem .6rem; border: 1px solid; border-radius: 1rem; font-size: .875rem;
  font-weight: 600; color: var(--fine); }
.badge.stop { color: var(--stop); border-width: 2px; }
.today { display: flex; flex-wrap: wrap; gap: 0 .5rem; align-items: baseline; margin-top: .75rem; }
.today strong { font-size: 2rem; line-height: 1.25; letter-spacing: -.02em; }
svg { display: block; width: 100%; }
.meter { height: .75rem; margin: .35rem 0; }
.bar { height: .375rem; margin-top: .25rem; }
.track { fill: var(--track); }
.use { fill: var(--use); }
.now { fill: var(--today); }
.over { fill: var(--stop); }
.grid { stroke: var(--line); stroke-width: 1; }
.chart { max-width: 34rem; }
.chart text { fill: var(--soft); font-size: 12px; }
dl { display: flex; flex-wrap: wrap; gap: .5rem 2rem; margin-top: .75rem; }
dt { font-size: .8125rem; }
dd { font-size: 1.125rem; font-weight: 600; }
table { width: 100%; border-collapse: collapse; table-layout: fixed;
  font-variant-numeric: tabular-nums; }
caption { padding: 0 0 .35rem; font-size: .875rem; color: var(--soft); text-align: left; }
th, td { padding: .4rem 0 .4rem .25rem; text-align: right; vertical-align: top;
  border-top: 1px solid var(--line); font-size: .875rem; }
th:first-child { width: 36%; padding-left: 0; text-align: left; }
thead th { width: 22%; border: 0; padding-top: 0; font-size: .8125rem; font-weight: 400; }
th:nth-child(2) { width: 19%; }
th:last-child { width: 23%; }
tbody th { color: var(--ink); font-weight: 500; }
.rule { display: block; font-size: .8125rem; font-weight: 400; color: var(--soft); }
ul { padding-left: 1.1rem; font-size: .9375rem; }
.mac { font: .875rem/1.5 ui-monospace, monospace; }
summary { cursor: pointer; margin-top: .75rem; }
@media print, (min-width: 52rem) {
  .halves { display: grid; grid-template-columns: 1fr 1fr; gap: 0 2.5rem; } }
@media (min-width: 52rem) {
  section { padding: 1.25rem 1.5rem; }
  th, td { font-size: .9375rem; }
  thead th:nth-child(n) { width: 18%; }
  thead th:first-child { width: 46%; }
  .chart text { font-size: 10px; } }
@media print { :root { color-scheme: light;
  --ground: #fff; --card: #fff; --line: #bbb; --ink: #000; --soft: #444; --use: #2f7f78;
  --today: #b4630f; --track: #ddd; --stop: #a5281f; --fine: #2b6a44; }
  html { font-size: 75%; }
  body { padding: 0; }
  section { break-inside: avoid; margin: .75rem 0; }
  details { display: none; } }
)";
