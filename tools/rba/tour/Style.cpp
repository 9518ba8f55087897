#include "tools/rba/tour/Tour.h"

namespace rb::cli::tour {

const std::string_view kStyleSheet = R"(
:root {
  --ground: #f6f5f2; --paper: #ffffff; --ink: #1d2125; --dim: #626a73; --line: #e2dfd8;
  --accent: #0b6e75; --warm: #b4531f; --soft: #e6f1f1; --check: #d9d9d9; --well: #efede8;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #14171a; --paper: #1c2024; --ink: #e6e8ea; --dim: #9aa3ab; --line: #30363c;
    --accent: #63c3c9; --warm: #ee9d6b; --soft: #1d3234; --check: #4a4f54; --well: #121416;
  }
}
* { box-sizing: border-box; }
html { scroll-behavior: smooth; -webkit-text-size-adjust: 100%; }
body {
  margin: 0; background: var(--ground); color: var(--ink);
  font: 16px/1.55 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif;
}
code, .bits { font-family: ui-monospace, "Cascadia Mono", Menlo, "DejaVu Sans Mono", monospace; font-size: .9em; }
a { color: var(--accent); }
a:focus-visible { outline: 2px solid var(--accent); outline-offset: 3px; border-radius: 4px; }
header { background: var(--paper); border-bottom: 1px solid var(--line); }
.inner, main { max-width: 1240px; margin: 0 auto; padding: 0 28px; }
header .inner { padding-top: 52px; padding-bottom: 30px; }
.eyebrow { margin: 0; color: var(--accent); font-weight: 600; letter-spacing: .02em; }
h1 { margin: 6px 0 10px; font-size: clamp(2.2rem, 5vw, 3.2rem); line-height: 1.1; letter-spacing: -.02em; font-weight: 680; }
.tagline { margin: 0; max-width: 44em; color: var(--dim); font-size: 1.1rem; }
nav ol { list-style: none; counter-reset: section; display: flex; flex-wrap: wrap; gap: 8px; margin: 26px 0 0; padding: 0; }
nav li { counter-increment: section; }
nav a {
  display: block; padding: 7px 13px; border: 1px solid var(--line); border-radius: 999px;
  background: var(--ground); color: var(--ink); text-decoration: none; font-size: .95rem;
}
nav a::before { content: counter(section); margin-right: 8px; color: var(--accent); font-weight: 650; }
nav a:hover { border-color: var(--accent); }
section { padding: 46px 0 22px; scroll-margin-top: 8px; }
section + section { border-top: 1px solid var(--line); }
h2 { margin: 0 0 14px; font-size: 1.75rem; line-height: 1.2; letter-spacing: -.012em; font-weight: 660; }
.count { margin-right: 6px; color: var(--accent); }
.sub { margin: 38px 0 6px; font-size: 1.2rem; font-weight: 640; }
section > p { max-width: 50em; }
.lead { color: var(--dim); margin: 0 0 20px; }
.lead code { color: var(--ink); }
.dim { color: var(--dim); }
.figures { display: flex; flex-wrap: wrap; gap: 10px 38px; margin: 22px 0 28px; color: var(--dim); }
.figures b { display: block; color: var(--ink); font-size: 1.7rem; line-height: 1.2; font-weight: 620; font-variant-numeric: tabular-nums; letter-spacing: -.01em; }
.cards { display: grid; grid-template-columns: repeat(auto-fill, minmax(258px, 1fr)); gap: 20px; }
.card { background: var(--paper); border: 1px solid var(--line); border-radius: 12px; overflow: hidden; display: flex; flex-direction: column; }
.frame { position: relative; aspect-ratio: 4 / 3; background: var(--well); }
.frame img { position: absolute; inset: 14px; width: calc(100% - 28px); height: calc(100% - 28px); object-fit: contain; }
.frame img.small { image-rendering: pixelated; }
.frame.alpha { background: repeating-conic-gradient(var(--check) 0 25%, var(--paper) 0 50%) 0 0 / 20px 20px; }
.badge { position: absolute; right: 10px; bottom: 10px; padding: 2px 10px; border-radius: 999px; background: var(--paper); color: var(--warm); font-size: .78rem; font-weight: 600; border: 1px solid var(--line); }
.steps { display: grid; height: 100%; grid-template-columns: repeat(auto-fill, minmax(min(100%, 270px), 1fr)); gap: 20px; }
.steps.wide { grid-template-columns: repeat(auto-fill, minmax(min(100%, 526px), 1fr)); }
.groups { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 560px), 1fr)); gap: 34px 20px; }
.groups > .full { grid-column: 1 / -1; }
.real { aspect-ratio: auto; height: 276px; display: grid; place-content: safe center; overflow-x: auto; }
.real img { position: static; width: auto; height: auto; max-width: none; image-rendering: pixelated; }
.real img.alpha { background: repeating-conic-gradient(#c4c4c4 0 25%, #ffffff 0 50%) 0 0 / 16px 16px; }
.levels { display: flex; align-items: flex-end; gap: 10px; overflow-x: auto; padding-bottom: 8px; }
.levels img { flex: none; image-rendering: pixelated; }
.source { position: relative; overflow: visible; background: none; border-style: dashed; border-color: var(--dim); }
.source .frame { background: none; }
.source::after {
  content: "→"; position: absolute; z-index: 1; top: 121px; right: -28px; width: 34px; height: 34px; display: grid; place-items: center;
  border-radius: 50%; background: var(--accent); color: var(--paper); font-weight: 650;
}
.step p { margin: 0 16px 6px; font-size: .88rem; color: var(--dim); }
.step p:last-child { margin-bottom: 16px; color: var(--ink); }
.card h3 { margin: 14px 16px 6px; font-size: 1rem; font-weight: 640; overflow-wrap: anywhere; line-height: 1.35; }
.card dl { margin: 0; padding: 0 16px 16px; font-size: .88rem; }
.card dl div { display: grid; grid-template-columns: 82px 1fr; gap: 10px; padding: 2px 0; }
dt { color: var(--dim); }
dd { margin: 0; overflow-wrap: anywhere; font-variant-numeric: tabular-nums; }
.scroll { overflow-x: auto; margin: 14px 0 8px; border: 1px solid var(--line); border-radius: 12px; background: var(--paper); }
.sheet { width: fit-content; max-width: 100%; }
table { border-collapse: collapse; width: 100%; font-size: .93rem; }
th, td { padding: 9px 16px; text-align: left; vertical-align: middle; border-top: 1px solid var(--line); font-weight: 400; }
thead th { border-top: 0; color: var(--dim); font-size: .84rem; font-weight: 560; white-space: nowrap; }
td code, th code { white-space: nowrap; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
.bits i, .bits b, .bits span { padding: 2px 4px; border-radius: 4px; font-style: normal; font-weight: 400; margin-right: 3px; }
.bits i { color: var(--warm); } .bits b { color: var(--accent); background: var(--soft); } .bits span { color: var(--dim); }
.places { max-width: 50em; padding-left: 22px; margin: 0 0 20px; }
.places li { padding: 2px 0 2px 6px; } .places li::marker { color: var(--accent); font-weight: 600; }
.places span { color: var(--dim); margin-left: 10px; font-size: .93rem; }
.dots { white-space: nowrap; }
.dot { display: inline-grid; place-items: center; width: 24px; height: 24px; margin-right: 6px; border-radius: 50%; font-size: .78rem; border: 1.5px solid var(--accent); color: var(--accent); font-variant-numeric: tabular-nums; }
.dot.wins { background: var(--accent); color: var(--paper); font-weight: 650; }
.dot.gone { border-color: var(--dim); border-style: dashed; border-width: 1px; color: var(--dim); }
.plots { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 420px), 1fr)); gap: 20px; }
figure { margin: 0; padding: 18px 18px 10px; background: var(--paper); border: 1px solid var(--line); border-radius: 12px; }
figcaption { color: var(--dim); font-size: .93rem; margin-bottom: 10px; } figcaption b { color: var(--ink); font-weight: 640; }
svg { display: block; width: 100%; height: auto; }
svg text { fill: var(--dim); font: 12px system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
.grid line { stroke: var(--line); stroke-width: 1; }
.bands rect { fill: var(--soft); opacity: .45; } .bands rect:first-child { opacity: 1; }
.curve { fill: none; stroke: var(--accent); stroke-width: 2.2; stroke-linejoin: round; }
.curve.warm { stroke: var(--warm); stroke-dasharray: 7 4; } .rule { stroke: var(--line); }
.mark { fill: var(--accent); } .mark.warm { fill: var(--paper); stroke: var(--warm); stroke-width: 2.2; } .mark.dim { fill: var(--dim); }
.luminaire { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 520px), 1fr)); gap: 20px; align-items: start; }
.luminaire h3 { margin: 0 0 10px; font-size: 1rem; font-weight: 640; overflow-wrap: anywhere; }
.tables { display: grid; gap: 20px; }
.tables figure img { display: block; width: 100%; height: auto; border-radius: 6px; background: #000; }
.findings { margin: 6px 0 8px; padding-left: 20px; font-size: .93rem; } .findings li { padding: 2px 0; }
.luminaire + .luminaire { margin-top: 34px; }
.polar-grid { fill: none; stroke: var(--line); stroke-width: 1; }
.polar-first { fill: var(--accent); fill-opacity: .1; stroke: var(--accent); stroke-width: 2.2; stroke-linejoin: round; }
.polar-second { fill: var(--warm); fill-opacity: .08; stroke: var(--warm); stroke-width: 2.2; stroke-linejoin: round; stroke-dasharray: 7 4; }
svg .polar-label, svg .polar-title { font-size: 13px; stroke: var(--paper); stroke-width: 3; stroke-linejoin: round; paint-order: stroke; }
svg .polar-title { font-size: 21px; font-weight: 640; fill: var(--ink); }
.trouble { padding: 14px 18px; border: 1px solid var(--warm); border-radius: 12px; color: var(--warm); }
footer { margin-top: 24px; color: var(--dim); font-size: .9rem; border-top: 1px solid var(--line); }
footer .inner { padding-top: 26px; padding-bottom: 46px; }
@media (max-width: 640px) { .source::after { display: none; } }
@media (max-width: 560px) { .inner, main { padding-left: 18px; padding-right: 18px; } th, td { padding: 8px 12px; } }
@media print { .card, figure, tr { break-inside: avoid; } }
)";

}  // namespace rb::cli::tour
