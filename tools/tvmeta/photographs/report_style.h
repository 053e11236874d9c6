// The style sheet of the report, for screens of any width, light and dark, and for print.
#pragma once

#include <string_view>

constexpr std::string_view ReportStyle = R"(
:root { color-scheme: light dark; --ink: #1c1c1c; --paper: #fff; --soft: #595959; --line: #d0d0d0; --card: #f6f6f4;
  --mark: #b3470a; --focus: #0a58ca; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #ececec; --paper: #161616; --soft: #b0b0b0; --line: #444; --card: #212121; --mark: #ff9d57;
    --focus: #8ab8ff; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 75rem; padding: 1rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.5 system-ui, sans-serif; }
h1, h2, h3 { line-height: 1.25; }
a { color: inherit; }
:focus-visible { outline: 3px solid var(--focus); outline-offset: 2px; }
.skip { position: absolute; left: -999rem; }
.skip:focus { position: static; }
nav ul { display: flex; flex-wrap: wrap; gap: 1rem; padding: 0; list-style: none; }
.choices { display: flex; flex-wrap: wrap; gap: 0 1rem; }
fieldset { display: flex; flex-wrap: wrap; gap: .25rem 1rem; margin: 0 0 .5rem; border: 1px solid var(--line); }
label { padding: .25rem 0; }
@supports not selector(:has(a)) { .choices { display: none; } }
body:has(#by-range:checked) .set { order: var(--range); }
body:has(#by-size:checked) .set { order: var(--size); }
.sets { display: flex; flex-direction: column; gap: 1rem; }
.set { padding: .75rem 1rem; border: 1px solid var(--line); border-radius: .5rem; background: var(--card); }
.set:target { border-color: var(--mark); }
.set h3 { margin: 0; }
.facts { margin: 0 0 .5rem; color: var(--soft); overflow-wrap: anywhere; }
.view { display: flex; flex-wrap: wrap; gap: .75rem 2rem; align-items: center; margin-bottom: .5rem; }
.strip { display: flex; flex-wrap: wrap; gap: .75rem; margin: 0; padding: 0; list-style: none; }
.strip figure { margin: 0; width: 10rem; }
.frame { display: flex; align-items: center; justify-content: center; width: 10rem; height: 10rem; background: #777;
  color: #fff; }
.frame img { width: 10rem; height: 10rem; object-fit: contain; }
.o2 { transform: scaleX(-1); }
.o3 { transform: rotate(180deg); }
.o4 { transform: scaleY(-1); }
.o5 { transform: rotate(90deg) scaleY(-1); }
.o6 { transform: rotate(90deg); }
.o7 { transform: rotate(-90deg) scaleY(-1); }
.o8 { transform: rotate(-90deg); }
figcaption { font-size: .875rem; overflow-wrap: anywhere; }
figcaption b { color: var(--mark); }
.ev { flex: 1 1 18rem; max-width: 30rem; margin: .5rem 0; fill: var(--ink); font: 12px system-ui, sans-serif;
  text-anchor: middle; }
.ev .dot { fill: var(--paper); }
.ev line { stroke: var(--soft); }
.ev circle { fill: var(--mark); }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-size: .875rem; font-variant-numeric: tabular-nums; }
caption { text-align: left; color: var(--soft); }
th, td { padding: .2rem .6rem .2rem 0; border-bottom: 1px solid var(--line); text-align: left; vertical-align: top; }
th[scope=row] { min-width: 7rem; font-weight: normal; overflow-wrap: anywhere; }
td.n, th.n { text-align: right; white-space: nowrap; }
@media print, (max-width: 40rem) {
  .strip figure, .frame, .frame img { width: 7rem; }
  .frame, .frame img { height: 7rem; }
}
@media print {
  :root { --ink: #000; --paper: #fff; --card: #fff; --soft: #333; --line: #999; --mark: #000; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav, .choices, .skip { display: none; }
  .sets { display: block; }
  .set { margin-bottom: 1rem; break-inside: avoid; }
  .frame { print-color-adjust: exact; }
}
)";
