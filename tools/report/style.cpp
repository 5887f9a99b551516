// The page's style sheet: colours as variables for light, dark and print.
#include "report/page.h"

namespace report {

const char* const kStyle = R"(
:root{--bg:#fff;--fg:#1b1f24;--soft:#57606a;--rule:#d0d7de;--grid:#e4e8ec;--panel:#f6f8fa;
--strong:#2da44e;--generous:#3f83d6;--warn:#e5a50a;--dyn:#a371d9;--bad:#d1383d;--none:#c3c9d0;--mark:#fff;
--helix:#c9413f;--strand:#2f6fb5;--coil:#8b949e;--conf:#7a8b9c;--conf2:#c0c9d2;
--gm:#3b78c2;--gp:#e08a1e;--t:#3f9b6b;--box:9,105,218;--dotin:#111;--dotout:#7d858d;--pred:#c2255c;--ref:#6f42c1;
--notebg:#fff4d6;--notefg:#6b4b00}
@media (prefers-color-scheme:dark){:root{--bg:#0f1318;--fg:#e6edf3;--soft:#9aa5b1;--rule:#343b44;--grid:#262c34;
--panel:#171c23;--strong:#3fb960;--generous:#58a0f0;--warn:#d9a21b;--dyn:#b58cf0;--bad:#f0605f;--none:#4a525c;
--mark:#0b0e12;--helix:#e5605c;--strand:#5a9be0;--coil:#8b949e;--conf:#8fa1b3;--conf2:#4b5764;--gm:#5a9be0;
--gp:#eca046;--t:#58b785;--box:88,166,255;--dotin:#fff;--dotout:#8b949e;--pred:#ff7aa8;--ref:#c9a5ff;
--notebg:#3a2f12;--notefg:#f2d58a}}
@media print{:root{--bg:#fff;--fg:#000;--soft:#444;--rule:#bbb;--grid:#ddd;--panel:#fff;--strong:#2da44e;
--generous:#3f83d6;--warn:#e5a50a;--dyn:#a371d9;--bad:#d1383d;--none:#c3c9d0;--mark:#fff;--helix:#c9413f;
--strand:#2f6fb5;--coil:#777;--conf:#7a8b9c;--conf2:#c0c9d2;--gm:#3b78c2;--gp:#e08a1e;--t:#3f9b6b;
--box:9,105,218;--dotin:#111;--dotout:#7d858d;--pred:#c2255c;--ref:#6f42c1;--notebg:#fff;--notefg:#000}}
*{box-sizing:border-box}
html{color-scheme:light dark;-webkit-text-size-adjust:100%}
body{margin:0;background:var(--bg);color:var(--fg);font:15px/1.5 system-ui,"Segoe UI","DejaVu Sans",sans-serif;
-webkit-print-color-adjust:exact;print-color-adjust:exact}
main{max-width:960px;margin:0 auto;padding:24px 20px 48px}
h1{font-size:1.6rem;line-height:1.25;margin:0 0 4px;overflow-wrap:anywhere}
h2{font-size:1.2rem;margin:36px 0 8px;padding-top:12px;border-top:1px solid var(--rule)}
p{margin:6px 0;max-width:75ch}
.sub,.legend,figcaption,footer{color:var(--soft);font-size:.875rem}
.legend{max-width:none}
.nobr{white-space:nowrap}.item{white-space:nowrap;margin-right:.7em}
ul.summary{margin:14px 0;padding:0;list-style:none}
ul.summary li{margin:6px 0;padding:6px 12px;border-left:4px solid var(--rule);background:var(--panel);
overflow-wrap:anywhere}
ul.summary li:first-child{font-size:1.08rem}
ul.summary li.warning{border-left-color:var(--warn);background:var(--notebg);color:var(--notefg)}
.chips{display:flex;flex-wrap:wrap;gap:8px;margin:12px 0;padding:0;list-style:none}
.chips li{display:flex;align-items:center;gap:6px;border:1px solid var(--rule);border-radius:6px;padding:2px 10px}
.chips b{font-variant-numeric:tabular-nums}
.key{display:inline-block;width:.8em;height:.8em;border-radius:2px;vertical-align:-.06em}
nav{font-size:.9rem;display:flex;flex-wrap:wrap;gap:4px 14px;margin:10px 0}
a{color:var(--generous)}
svg{display:block;width:100%;height:auto;overflow:visible}
svg.strip{margin:12px 0;break-inside:avoid}
svg.defs{position:absolute;width:0;height:0}
text{fill:var(--fg);font-family:system-ui,"Segoe UI","DejaVu Sans",sans-serif}
.num,.tick{font-size:10px;fill:var(--soft)}
.tick{font-size:9.5px}
.axis{font-size:10.5px}
.seq{font-size:11.5px;font-family:ui-monospace,"DejaVu Sans Mono",monospace}
.mark{font-size:9.5px;fill:var(--mark);font-weight:700}
.mark.on-warn{fill:#1b1f24}
.rot{font-size:9px}
.small{font-size:8.5px;fill:var(--soft)}
.map-name{font-size:11px;font-weight:700}
.map-class{font-size:10px}
.frame{fill:none;stroke:var(--rule);pointer-events:all}
.grid{stroke:var(--grid);stroke-width:1}
.limit{stroke:var(--dyn);stroke-dasharray:4 3}
.ss-h{fill:var(--helix)}.ss-e{fill:var(--strand)}.ss-l{stroke:var(--coil);stroke-width:2.5}
.conf{fill:var(--conf)}.conf-seq{fill:var(--conf2)}
rect.k-strong,.key.k-strong{fill:var(--strong);background:var(--strong)}
rect.k-generous,.key.k-generous{fill:var(--generous);background:var(--generous)}
rect.k-warn,.key.k-warn{fill:var(--warn);background:var(--warn)}
rect.k-dyn,.key.k-dyn{fill:var(--dyn);background:var(--dyn)}
rect.k-bad,.key.k-bad{fill:var(--bad);background:var(--bad)}
rect.k-none,.key.k-none{fill:var(--none);background:var(--none)}
.bar{fill:none;stroke-width:1.6}.dot{stroke:none}
.bar.k-strong{stroke:var(--strong)}.dot.k-strong{fill:var(--strong)}
.bar.k-generous{stroke:var(--generous)}.dot.k-generous{fill:var(--generous)}
.bar.k-warn{stroke:var(--warn)}.dot.k-warn{fill:var(--warn)}
.bar.k-dyn{stroke:var(--dyn)}.dot.k-dyn{fill:var(--dyn)}
.bar.k-bad{stroke:var(--bad)}.dot.k-bad{fill:var(--bad)}
.bar.k-none{stroke:var(--none)}.dot.k-none{fill:var(--none)}
.ref{fill:none;stroke:var(--ref);stroke-width:1.4}
.s2-line{fill:none;stroke:var(--conf);stroke-width:1.4}.s2-dot{fill:var(--conf)}.s2-low{fill:var(--dyn)}
.rot-gm,.key.rot-gm{fill:var(--gm);background:var(--gm)}
.rot-gp,.key.rot-gp{fill:var(--gp);background:var(--gp)}
.rot-t,.key.rot-t{fill:var(--t);background:var(--t)}
.key.ss-h{background:var(--helix)}.key.ss-e{background:var(--strand)}
.key.ss-l{background:var(--coil);height:3px;vertical-align:.25em;width:1.2em}
.key.conf{background:var(--conf)}.key.conf-seq{background:var(--conf2)}
.q1,.sq1{fill:rgba(var(--box),.10);background:rgba(var(--box),.10)}
.q2,.sq2{fill:rgba(var(--box),.20);background:rgba(var(--box),.20)}
.q3,.sq3{fill:rgba(var(--box),.34);background:rgba(var(--box),.34)}
.q4,.sq4{fill:rgba(var(--box),.50);background:rgba(var(--box),.50)}
.q5,.sq5{fill:rgba(var(--box),.68);background:rgba(var(--box),.68)}
.q6,.sq6{fill:rgba(var(--box),.90);background:rgba(var(--box),.90)}
.match-in{stroke:var(--dotin);stroke-width:2.2;stroke-linecap:round;fill:none}
.match-out{stroke:var(--dotout);stroke-width:2.2;stroke-linecap:round;fill:none}
.pred{fill:none;stroke:var(--pred);stroke-width:1.5}
.key.dot-in{background:var(--dotin);border-radius:50%;width:.45em;height:.45em;vertical-align:.15em}
.key.dot-out{background:var(--dotout);border-radius:50%;width:.45em;height:.45em;vertical-align:.15em}
.key.ring{border:2px solid var(--pred);border-radius:50%}
.key.diamond{border:2px solid var(--ref);width:.6em;height:.6em;transform:rotate(45deg);margin:0 .2em}
.maps{display:grid;grid-template-columns:repeat(auto-fill,minmax(152px,1fr));gap:10px 12px}
svg.rama{break-inside:avoid}
.scroll{overflow-x:auto}
table{border-collapse:collapse;font-size:.84rem;font-variant-numeric:tabular-nums}
th,td{padding:2px 8px;text-align:right;border-bottom:1px solid var(--grid);white-space:nowrap}
th{background:var(--panel);font-weight:600}
td.l,th.l{text-align:left}
tr{break-inside:avoid}
tr.extreme td{font-weight:700}
.tag{border-left:.7em solid var(--none);padding-left:.4em}
.tag.k-strong{border-color:var(--strong)}.tag.k-generous{border-color:var(--generous)}
.tag.k-warn{border-color:var(--warn)}.tag.k-dyn{border-color:var(--dyn)}.tag.k-bad{border-color:var(--bad)}
@media (max-width:760px){table{font-size:.76rem}th,td{padding:2px 5px}}
footer{margin-top:36px;border-top:1px solid var(--rule);padding-top:8px;overflow-wrap:anywhere}
@page{margin:14mm}
@media print{body{font-size:11px}main{max-width:none;padding:0}nav{display:none}h2{break-after:avoid}
.scroll{overflow:visible}table{font-size:7.4pt}th,td{padding:1px 4px}
section>p{break-after:avoid}.maps{grid-template-columns:repeat(6,1fr);gap:6px 8px}}
)";

}  // namespace report
