#pragma once

namespace tamesh {

// What a report looks like, and what its script does.

inline constexpr char kReportStyle[] = R"(
:root { color-scheme: light dark; --paper: #fff; --ink: #1c1c1c; --soft: #666; --line: #ccc;
  --lane: #f3f3f5; --wait: #c9d3e8; --work: #7ea6e0; --bad: #c62828; }
@media (prefers-color-scheme: dark) { :root { --paper: #17181a; --ink: #e6e6e6; --soft: #a0a0a0;
  --line: #444; --lane: #212327; --wait: #3a4660; --work: #3f6cb0; --bad: #ff7b72; } }
body { margin: 0 auto; max-width: 75rem; padding: 1rem 1.5rem; background: var(--paper);
  color: var(--ink); font: 15px/1.45 system-ui, sans-serif; }
h1 { margin: .5rem 0 0; overflow-wrap: anywhere; }
h2 { margin: 2rem 0 .5rem; border-bottom: 1px solid var(--line); }
p.about, .more, i { color: var(--soft); }
.note { color: var(--bad); }
img { max-width: 100%; height: auto; background: #fff; }
table { border-collapse: collapse; }
th, td { padding: .15rem .9rem .15rem 0; text-align: left; vertical-align: top;
  border-bottom: 1px solid var(--line); unicode-bidi: isolate; }
table.values th { min-width: 12rem; font-weight: normal; color: var(--soft); }
table.values th, table.values td { overflow-wrap: anywhere; }
.wide th, .wide td { white-space: nowrap; }
td.number { text-align: right; font-variant-numeric: tabular-nums; }
.parts { display: flex; flex-wrap: wrap; gap: 0 3rem; }
.parts section { min-width: 0; }
.wide { overflow-x: auto; }
#tree { font: 13px/1.5 ui-monospace, monospace; overflow-wrap: anywhere; }
#tree details > details, #tree .leaf, #tree .more { margin-left: 1.4rem; unicode-bidi: isolate; }
#tree i { font-style: normal; }
#tree b, #tree span, h1 { unicode-bidi: isolate; }
summary { cursor: pointer; }
svg text { font: 11px system-ui, sans-serif; fill: var(--ink); }
svg text.time { fill: var(--soft); }
svg text.lane { font-weight: bold; }
svg .lane { fill: var(--lane); }
svg text.lane { fill: var(--ink); }
svg .tick { stroke: var(--line); pointer-events: none; }
svg .wait { fill: var(--wait); }
svg .work { fill: var(--work); }
svg .begin { stroke: var(--ink); }
svg .dropped { stroke: var(--bad); stroke-width: 3; }
@media print { button, label { display: none; } .wide { overflow: visible; } }
)";

// Its hash stands in the page's policy: a browser tells the new one when it refuses a changed one.
inline constexpr char kReportScript[] = R"(
'use strict';
function place(id, control) {
  const target = document.getElementById(id);
  if (target) { target.closest('section').querySelector('h2').after(control); }
  return target;
}
function offer(isOpen) {
  const button = document.createElement('button');
  button.textContent = isOpen ? 'open all' : 'close all';
  const tree = place('tree', button);
  button.onclick = () => tree.querySelectorAll('details').forEach(d => { d.open = isOpen; });
}
offer(false);
offer(true);
const zoom = document.createElement('input');
zoom.type = 'range';
zoom.min = 0;
zoom.max = 6;
zoom.step = 0.25;
zoom.value = 0;
const label = document.createElement('label');
label.append('zoom ', zoom);
const timeline = place('timeline', label);
zoom.oninput = () => { timeline.style.width = 100 * 2 ** zoom.value + '%'; };
)";

} // namespace tamesh
