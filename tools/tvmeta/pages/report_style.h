// The style sheet of the report, for screens of any width, light and dark, and for print.
#pragma once

#include <string_view>

// content-visibility leaves out the layout of what is not in sight, so that pages of thousands of photographs open
// soon.
constexpr std::string_view ReportStyle = R"(
:root { color-scheme: light dark; --ink: #1c1c1c; --paper: #fff; --soft: #595959; --line: #d0d0d0; --card: #f6f6f4;
  --mark: #9c3d08; --focus: #0a58ca; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #ececec; --paper: #161616; --soft: #b0b0b0; --line: #444; --card: #212121; --mark: #ff9d57;
    --focus: #8ab8ff; }
}
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 75rem; padding: 1rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere; }
h1, h2, h3 { line-height: 1.25; }
h1 { font-size: clamp(1.375rem, 5vw, 2rem); }
a { color: inherit; }
:focus-visible { outline: 3px solid var(--focus); outline-offset: 2px; }
.skip { position: absolute; left: -999rem; }
.skip:focus { position: static; }
nav ul { display: flex; flex-wrap: wrap; gap: 1rem; padding: 0; list-style: none; }
.choices { display: flex; flex-wrap: wrap; gap: 0 1rem; }
fieldset { display: flex; flex-wrap: wrap; gap: .25rem 1rem; min-width: 0; margin: 0 0 .5rem;
  border: 1px solid var(--line); }
label { padding: .25rem 0; }
@supports not selector(:has(a)) { .choices { display: none; } }
.choices:has(#by-range:checked) ~ .sets .set { order: var(--range); }
.choices:has(#by-size:checked) ~ .sets .set { order: var(--size); }
.sets { display: flex; flex-direction: column; gap: 1rem; }
.set { padding: .75rem 1rem; border: 1px solid var(--line); border-radius: .5rem; background: var(--card);
  content-visibility: auto; contain-intrinsic-size: auto 28rem; }
.set:target { border-color: var(--mark); }
.set h3 { margin: 0; }
.facts { margin: 0 0 .5rem; color: var(--soft); }
.view { display: flex; flex-wrap: wrap; gap: .75rem 2rem; align-items: center; margin-bottom: .5rem; }
.strip { display: flex; flex-wrap: wrap; gap: .75rem; margin: 0; padding: 0; list-style: none; }
.strip li { width: 10rem; }
section > .strip li { content-visibility: auto; contain-intrinsic-size: auto 10rem auto 16rem; }
.frame { display: flex; align-items: center; justify-content: center; width: 100%; aspect-ratio: 1; padding: 0;
  border: 0; background: #666; color: #fff; font: inherit; }
button.frame { cursor: zoom-in; }
.frame img { width: 100%; height: 100%; object-fit: contain; }
.large { width: 96vw; height: 88vh; padding: 0; border: 0; background: center / contain no-repeat; cursor: zoom-out; }
.large::backdrop { background: rgb(0 0 0 / .7); }
.large.o5, .large.o6, .large.o7, .large.o8 { width: min(96vw, 92vh); height: min(96vw, 92vh); }
@supports not selector(:popover-open) { .large { display: none; } }
.o2 { transform: scaleX(-1); }
.o3 { transform: rotate(180deg); }
.o4 { transform: scaleY(-1); }
.o5 { transform: rotate(90deg) scaleY(-1); }
.o6 { transform: rotate(90deg); }
.o7 { transform: rotate(-90deg) scaleY(-1); }
.o8 { transform: rotate(-90deg); }
.strip p { margin: 0; font-size: .875rem; }
.strip p a { display: block; }
.strip b { color: var(--mark); }
.diagram { flex: 1 1 18rem; min-width: 0; max-width: 30rem; margin: .5rem 0; fill: var(--ink);
  font: 12px system-ui, sans-serif; text-anchor: middle; }
.diagram .dot { fill: var(--paper); }
.diagram path { stroke: var(--soft); }
.diagram circle { fill: var(--mark); }
table { border-collapse: collapse; width: 100%; font-size: .875rem; font-variant-numeric: tabular-nums; }
caption { text-align: left; color: var(--soft); }
th, td { padding: .2rem 0 .2rem .6rem; border-bottom: 1px solid var(--line); text-align: right; vertical-align: top; }
th:first-child { padding-left: 0; text-align: left; }
th[scope=row] { font-weight: normal; }
@media print, (max-width: 40rem) {
  .strip { gap: .5rem; }
  .strip li { width: 6.5rem; }
}
@media (max-width: 40rem) {
  .set { padding: .5rem; }
  table, caption, tbody { display: block; }
  thead { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
  tr { display: flex; flex-wrap: wrap; gap: 0 .75rem; padding: .25rem 0; border-bottom: 1px solid var(--line); }
  th, td { padding: 0; border: 0; text-align: left; }
  th[scope=row] { flex: 1 0 100%; font-weight: bold; }
  td:empty { display: none; }
  td[class]::before { color: var(--soft); }
  .offset::before { content: "Offset "; }
  .ev::before { content: "EV "; }
  .iso::before { content: "ISO "; }
}
@media print {
  :root { --ink: #000; --paper: #fff; --card: #fff; --soft: #333; --line: #999; --mark: #000; }
  body { max-width: none; padding: 0; font-size: 10pt; }
  nav, .choices, .skip { display: none; }
  .sets { display: block; }
  .set { margin-bottom: 1rem; break-inside: avoid; }
  .set, .strip li { content-visibility: visible; }
  .frame { print-color-adjust: exact; }
}
)";
