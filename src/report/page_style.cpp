#include "report/page_style.h"

namespace vorel::report {
namespace {

constexpr std::string_view stylesheet = R"(:root {
  color-scheme: light dark;
  --page: #ffffff; --panel: #f6f8fa; --line: #dfe3e8; --text: #1b1f24; --faint: #5c656f;
  --accent: #0b5cad; --alarm: #d03b3b;
  --good: #0f7a4d; --good-ground: #e6f5ee; --doubtful: #8f5a00; --doubtful-ground: #fff4d9;
  --bad: #b3261e; --bad-ground: #fdeceb; --plain: #4b5661; --plain-ground: #eef1f4;
  --mono: "DejaVu Sans Mono", ui-monospace, Menlo, Consolas, "Liberation Mono", monospace;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --page: #14171b; --panel: #1c2025; --line: #31373f; --text: #e6e9ed; --faint: #a0a9b3;
    --accent: #7db6f2; --alarm: #ff7b72;
    --good: #69cfa0; --good-ground: #14302a; --doubtful: #f0bf5b; --doubtful-ground: #362a12;
    --bad: #ff8f86; --bad-ground: #3a1c1b; --plain: #b3bcc6; --plain-ground: #272c33;
  }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body { margin: 0 auto; max-width: 1080px; padding: 0 24px 64px; background: var(--page);
  color: var(--text); font: 15px/1.55 system-ui, -apple-system, "Segoe UI", "Noto Sans",
  "DejaVu Sans", sans-serif; overflow-wrap: anywhere; }
code, pre { font-family: var(--mono); font-size: 0.87em; }
a { color: var(--accent); }
h1 { margin: 0 0 20px; font-size: 28px; line-height: 1.2; font-weight: 650; letter-spacing: -0.01em; }
h2 { margin: 0 0 14px; font-size: 20px; line-height: 1.3; font-weight: 650; }
h3 { margin: 0 0 8px; font-size: 15.5px; font-weight: 600; }
p { margin: 0 0 12px; max-width: 76ch; }
ul { margin: 0 0 12px; padding-left: 22px; }
header { padding-top: 36px; }
header .path { margin: -14px 0 18px; color: var(--faint); font-size: 13px; }
header .program { margin: 0 0 2px; color: var(--faint); font-size: 13px; letter-spacing: 0.04em; }
section { margin-top: 36px; padding-top: 26px; border-top: 1px solid var(--line); }
article { margin: 22px 0 0; padding: 16px 18px 6px; border: 1px solid var(--line);
  border-radius: 8px; }
footer { margin-top: 48px; color: var(--faint); font-size: 13px; }
nav { margin: 20px 0 0; font-size: 14px; }
nav a { display: inline-block; margin: 0 16px 4px 0; padding: 2px 0; text-decoration: none; }
nav a:hover, nav a:focus { text-decoration: underline; }
.quiet, .note, figcaption { color: var(--faint); }
.verdict { display: flex; gap: 14px; padding: 16px 18px; border-radius: 8px;
  border-left: 5px solid; }
.verdict p { margin: 0 0 4px; }
.verdict .word { font-size: 18px; font-weight: 650; line-height: 1.3; }
.verdict .word data { color: inherit; }
.verdict p:not(.word) { color: var(--text); }
.verdict > .mark { flex: none; width: 28px; height: 28px; border-radius: 50%; color: var(--page);
  font-size: 16px; font-weight: 700; line-height: 28px; text-align: center; }
.verdict.good > .mark { background: var(--good); }
.verdict.doubtful > .mark { background: var(--doubtful); }
.verdict.bad > .mark { background: var(--bad); }
.verdict.plain > .mark { background: var(--plain); }
.good { color: var(--good); background: var(--good-ground); border-color: var(--good); }
.doubtful { color: var(--doubtful); background: var(--doubtful-ground);
  border-color: var(--doubtful); }
.bad { color: var(--bad); background: var(--bad-ground); border-color: var(--bad); }
.plain { color: var(--plain); background: var(--plain-ground); border-color: var(--plain); }
.badge { display: inline-block; padding: 1px 9px; border-radius: 11px; font-size: 12.5px;
  font-weight: 600; line-height: 1.55; }
.badge .mark { margin-right: 5px; }
.tiles { display: grid; grid-template-columns: repeat(auto-fill, minmax(138px, 1fr)); gap: 10px;
  margin: 0 0 22px; }
.tile { padding: 11px 13px; background: var(--panel); border-radius: 8px; }
.tile dt { color: var(--faint); font-size: 12.5px; }
.tile dd { margin: 0; font-size: 23px; font-weight: 600; line-height: 1.35;
  font-variant-numeric: tabular-nums; }
.tile dd.note { font-size: 12.5px; font-weight: 400; }
.table, .pane, pre { overflow-x: auto; max-width: 100%; }
.table { margin: 0 0 16px; }
table { border-collapse: collapse; min-width: min(100%, 600px); font-size: 14px; }
th, td { padding: 6px 14px 6px 0; border-bottom: 1px solid var(--line); text-align: left;
  vertical-align: top; overflow-wrap: normal; }
thead th { color: var(--faint); font-size: 12.5px; font-weight: 500; white-space: nowrap; }
tbody th { font-weight: 500; white-space: nowrap; }
td:last-child, th:last-child { padding-right: 2px; }
.number { text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
td code, th code { white-space: nowrap; }
table.code { min-width: 0; font-family: var(--mono); font-size: 13px; }
table.code th, table.code td { padding: 3px 9px; text-align: center; font-weight: 400; }
table.code th:first-child { padding-left: 0; font-family: system-ui, sans-serif; }
.bar { width: 180px; min-width: 70px; vertical-align: middle; }
.bar span { display: block; height: 8px; min-width: 1px; border-radius: 2px;
  background: var(--accent); opacity: 0.65; }
figure { margin: 4px 0 18px; }
figcaption { margin-bottom: 8px; font-size: 13.5px; }
.pair { display: flex; flex-wrap: wrap; align-items: flex-start; gap: 0 64px; }
.pair > figure { flex: 0 1 auto; min-width: 0; max-width: 100%; }
.pair > details { min-width: min(100%, 300px); }
.pair table { min-width: min(100%, 300px); }
.pane { padding: 4px 0 6px; }
.pane .drawing { width: max(100%, var(--natural) * 0.62); }
.pair .drawing { width: var(--natural); max-width: max(100%, var(--natural) * 0.62); }
.pane .waves { width: max(100%, var(--natural) * 0.8); }
.instead { padding: 12px 14px; background: var(--panel); border-radius: 8px; }
details { margin: 0 0 12px; }
summary { cursor: pointer; width: fit-content; color: var(--accent); font-size: 14px; }
.as-text { font-size: 13.5px; }
.pair .as-text p { max-width: 440px; }
.as-text p { margin: 6px 0 0; padding: 10px 14px; background: var(--panel); border-radius: 8px; }
pre { margin: 8px 0 12px; padding: 12px 14px; background: var(--panel); border-radius: 8px;
  line-height: 1.45; tab-size: 2; }
.messages { padding-left: 0; list-style: none; }
.messages li { margin-bottom: 6px; }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; }
@media (max-width: 560px) {
  body { padding: 0 14px 40px; font-size: 14.5px; }
  header { padding-top: 22px; }
  h1 { font-size: 23px; }
  article { padding: 12px 12px 4px; }
  .tiles { grid-template-columns: repeat(2, minmax(0, 1fr)); }
  tbody th { white-space: normal; }
  .bar { display: none; }
  thead th:has(+ .bar), thead th:empty { display: none; }
}
@media print {
  :root { color-scheme: light; }
  body { max-width: none; padding: 0; font-size: 10.5pt; }
  nav, .as-text { display: none; }
  section { margin-top: 18pt; padding-top: 12pt; }
  figure, tr, .tile, .verdict { break-inside: avoid; }
  h2, h3, figcaption { break-after: avoid; }
  .table, .pane, pre { overflow: visible; }
  .pane .drawing, .pane .waves { width: 100%; }
  .pair .drawing { width: var(--natural); max-width: 100%; }
  pre { white-space: pre-wrap; }
  .verdict, .badge, .tile, pre, .bar span { print-color-adjust: exact;
    -webkit-print-color-adjust: exact; }
}
)";

}  // namespace

std::string_view page_style() { return stylesheet; }

}  // namespace vorel::report
