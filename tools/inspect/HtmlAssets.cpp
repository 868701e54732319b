#include "inspect/HtmlAssets.h"

/// What is not coloured by what it stands for takes its colours from the variables at the top, for light and dark.
const char* const htmlStyle = R"css(
:root{color-scheme:light dark;--page:#f6f7f9;--card:#fff;--text:#16202e;--soft:#5b6878;--line:#dde2e9;--hover:#eef2f8;
--link:#1d4ed8;--on:#fde68a;--error:#b91c1c;--error-soft:#fee2e2;--warning:#92400e;--warning-soft:#fef3c7;
--good:#166534;--good-soft:#dcfce7;
--run-in:#0c4a6e;--pack:#475569;--header:#2563eb;--index:#9333ea;--system:#0f766e;--picture:#15803d;--sound:#c2610c;
--data:#be185d;--compound:#4d7c0f;--stream:#0e7490;--other:#78716c;--rip:#7c2d12;--fill:#aeb9c7;--unread:#b91c1c;
--mono:ui-monospace,"SF Mono",Menlo,Consolas,"DejaVu Sans Mono",monospace}
@media(prefers-color-scheme:dark){:root{--run-in:#075985;--pack:#64748b;--rip:#a0522d;--page:#0d131c;--card:#151d29;--text:#e3e9f1;--soft:#94a3b8;--line:#283445;
--hover:#1d2838;--link:#93b4ff;--on:#594a10;--error:#fca5a5;--error-soft:#4c1717;--warning:#fcd34d;
--warning-soft:#44300a;--good:#86efac;--good-soft:#123821}}
*{box-sizing:border-box}
html{scroll-padding-top:3.5rem}
body{margin:0;background:var(--page);color:var(--text);font:15px/1.45 system-ui,"Segoe UI",Roboto,"DejaVu Sans",sans-serif}
a{color:var(--link);text-decoration:none}
a:hover{text-decoration:underline}
:focus-visible{outline:3px solid var(--link);outline-offset:1px}
header,main,footer{max-width:84rem;margin:0 auto;padding:0 1.25rem}
header{padding-top:1.5rem}
h1{margin:0;font-size:1.7rem;overflow-wrap:anywhere}
h2{margin:0 0 .75rem;font-size:1.15rem}
h3{margin:0;font-size:.95rem;font-weight:600}
p{margin:.5rem 0}
.soft,.more{color:var(--soft)}
.more{font-style:italic}
nav{position:sticky;top:0;z-index:9;background:var(--page);border-bottom:1px solid var(--line);margin-top:1rem}
nav div{max-width:84rem;margin:0 auto;padding:.5rem 1.25rem;display:flex;flex-wrap:wrap;gap:.2rem 1.2rem}
.card{background:var(--card);border:1px solid var(--line);border-radius:.6rem;padding:1rem 1.25rem;margin:1rem 0}
.facts{display:grid;grid-template-columns:repeat(auto-fit,minmax(11.5rem,1fr));gap:.9rem 1.5rem;margin:1rem 0 0}
.facts div{min-width:0}
.facts dt{color:var(--soft);font-size:.8rem}
.facts dd{margin:0;font-weight:600;overflow-wrap:anywhere}
.facts small{display:block;font-weight:400;color:var(--soft)}
.badge{display:inline-block;padding:.05rem .5rem;border-radius:1rem;font-size:.8rem;font-weight:600;white-space:nowrap;
background:var(--good-soft);color:var(--good)}
.badge.warning{background:var(--warning-soft);color:var(--warning)}
.badge.error,.badge.fatal{background:var(--error-soft);color:var(--error)}
.badge.fatal{border:1px solid}
.verdict{display:flex;flex-wrap:wrap;gap:.5rem;align-items:center;margin:.6rem 0 0}

.scroll{overflow:auto;margin-bottom:1rem}
#map,.scroll:last-child{margin-bottom:0}
.scroll.tall{max-height:32rem}
table{border-collapse:collapse;font-size:.86rem;min-width:14rem}
.full{width:100%}.blocks th{width:7rem}.blocks th:first-child{width:12rem}.blocks th:last-child{width:auto}
th{color:var(--soft);font-weight:500;text-align:left;vertical-align:bottom;position:sticky;top:0;background:var(--card)}
th,td{padding:.22rem .6rem;border-bottom:1px solid var(--line)}
td{vertical-align:top}
tbody tr:hover{background:var(--hover)}
.n{text-align:right}
td.n,.mono{font-family:var(--mono);font-size:.82rem;font-variant-numeric:tabular-nums;white-space:nowrap}
td.wide{overflow-wrap:anywhere;min-width:11rem}
td.tight,.blocks td:first-child{white-space:nowrap}
td:not(.n){min-width:5.5rem}
tr:target,tr.on,.set:target>summary{background:var(--on)}

.bar{display:flex;height:2.1rem;border-radius:.3rem;overflow:hidden;background:var(--line)}
.b{flex:1 1 0;min-width:0;height:100%;color:#fff;font-size:.74rem;line-height:2.1rem;position:relative;overflow:hidden;
display:flex;flex-wrap:wrap;justify-content:center;box-shadow:inset -1px 0 rgba(255,255,255,.45)}
.b span{padding:0 .3rem;white-space:nowrap;text-shadow:0 1px 2px rgba(0,0,0,.55)}
.b::before{content:"";width:1px;height:100%;margin-right:-1px}
.b:hover{text-decoration:none}
.b:hover,.b:focus-visible,.b.on{filter:brightness(1.25) saturate(1.2);outline:2px solid var(--text);outline-offset:-2px}
.b.flag::after{content:"";position:absolute;right:0;top:0;border:.42rem solid transparent;border-top-color:#ef4444;
border-right-color:#ef4444}
.b.flag.warning::after{border-top-color:#facc15;border-right-color:#facc15}
.own .b{min-width:1.1rem}
#scale:checked~.part .b{min-width:0}
.begin{height:1.4rem;margin:.15rem 0 0}
.begin .b{line-height:1.4rem;min-width:.8rem}
.caption{display:flex;gap:.6rem;align-items:baseline;font-size:.78rem;color:var(--soft);margin-top:.35rem}
.run-in{background:var(--run-in)}.pack{background:var(--pack)}.header{background:var(--header)}
.index{background:var(--index)}.system{background:var(--system)}.picture{background:var(--picture)}
.sound{background:var(--sound)}.data{background:var(--data)}.compound{background:var(--compound)}
.stream{background:var(--stream)}.other{background:var(--other)}.rip{background:var(--rip)}
.fill{background:repeating-linear-gradient(135deg,var(--fill) 0 4px,#cdd5de 4px 8px)}
.omitted{background:repeating-linear-gradient(90deg,#64748b 0 8px,#7c8aa0 8px 16px)}
.unread{background:repeating-linear-gradient(135deg,#991b1b 0 6px,#dc2626 6px 12px)}
.fill span{color:#1e293b;text-shadow:none}
i.sw{display:inline-block;width:.85em;height:.85em;border-radius:.2em;vertical-align:-.08em;margin-right:.35em}
.legend{display:flex;flex-wrap:wrap;gap:.2rem 1.1rem;font-size:.84rem;margin:.7rem 0 0;padding:0;list-style:none}
.map{padding:.2rem .4rem .4rem}
.marks,.ruler{position:relative;height:1rem}
.marks a{position:absolute;width:0;margin-left:-.35rem;border:.35rem solid transparent;border-top:.75rem solid #ef4444}
.marks a.warning{border-top-color:#eab308}
.parts{display:flex}
.parts>div{flex:1 1 0;min-width:0}
.parts .bar{border-radius:0;height:3rem}
.parts .b{line-height:3rem}
.parts small{display:flex;flex-wrap:wrap;height:1.2rem;overflow:hidden;font-size:.72rem;color:var(--soft);white-space:nowrap;
border-left:1px solid var(--soft);padding-left:.2rem}
.parts small::before{content:"";width:1px;height:100%;margin-right:-1px}
.parts small span{white-space:nowrap}
.ruler{font-size:.72rem;color:var(--soft);height:1.3rem}
.ruler span{position:absolute;border-left:1px solid var(--soft);padding-left:.25rem}
.ruler span.last{border-left:0;border-right:1px solid var(--soft);padding:0 .25rem 0 0;right:0}
.tools{display:flex;flex-wrap:wrap;gap:.4rem 1rem;align-items:center;font-size:.84rem}
#readout{min-height:1.5rem;font-size:.84rem;font-family:var(--mono);color:var(--soft);overflow-wrap:anywhere}
button{font:inherit;color:inherit;background:var(--hover);border:1px solid var(--line);border-radius:.35rem;
padding:.1rem .6rem;cursor:pointer}
.part{padding:.7rem 0;border-top:1px solid var(--line)}
.part h3{display:flex;flex-wrap:wrap;gap:.1rem .8rem;align-items:baseline;margin-bottom:.3rem}
.part h3 span{font-weight:400;font-size:.84rem;color:var(--soft)}
.part details{margin-top:.3rem;font-size:.86rem}
summary{cursor:pointer}
summary:hover{background:var(--hover)}
.set>summary{padding:.1rem .3rem;border-radius:.3rem}
.set summary .soft{font-size:.84rem}
dl.set-body{margin:.1rem 0 .4rem .55rem;padding-left:1rem;border-left:2px solid var(--line);display:grid;
grid-template-columns:minmax(8rem,max-content) minmax(0,1fr);gap:.05rem 1rem;font-size:.86rem}
.set-body dt{color:var(--soft);overflow-wrap:anywhere}
.set-body dd{margin:0;overflow-wrap:anywhere;min-width:0}
.set-body .down{grid-column:1/-1}
.dark{font-family:var(--mono);font-size:.78rem}
footer{color:var(--soft);font-size:.8rem;padding:1rem 1.25rem 2rem}
@media(max-width:50rem){.ruler span:nth-child(even){display:none}.facts{grid-template-columns:1fr 1fr}}
@media print{body{background:#fff;font-size:11px}nav,.tools,#readout{display:none}.card{break-inside:auto;border:0;padding:0}
#layout .part,tr{break-inside:avoid}h2,h3{break-after:avoid}.scroll,.scroll.tall{overflow:visible;max-height:none}*{print-color-adjust:exact;
-webkit-print-color-adjust:exact}}
)css";

/// All of it is comfort: without it the page shows the same, and its links lead to the same places.
const char* const htmlScript = R"js(
(() => {
  const all = selector => [...document.querySelectorAll(selector)];
  const readout = document.getElementById('readout');

  // A block stands in the file, in its partition and in a table: point at one, and all light up.
  let lit = [];
  const light = event => {
    const block = event.target.closest('.b, tr[id^="at-"]');
    lit.forEach(element => element.classList.remove('on'));
    lit = [];
    if (!block) return;
    if (block.title && readout) readout.textContent = block.title;
    const id = block.id || (block.getAttribute('href') || '').slice(1);
    if (id) lit = all(`.b[href="#${id}"], tr[id="${id}"]`);
    lit.forEach(element => element.classList.add('on'));
  };
  document.addEventListener('mouseover', light);
  document.addEventListener('focusin', light);

  // One stop of the tabulator for a bar, arrow keys within it.
  all('.bar').forEach(bar => {
    const blocks = [...bar.querySelectorAll('a')];
    blocks.slice(1).forEach(block => { block.tabIndex = -1; });
    bar.addEventListener('keydown', event => {
      const here = blocks.indexOf(document.activeElement);
      const to = {ArrowLeft: here - 1, ArrowRight: here + 1, Home: 0, End: blocks.length - 1}[event.key];
      if (here < 0 || !blocks[to]) return;
      event.preventDefault();
      blocks[here].tabIndex = -1;
      blocks[to].tabIndex = 0;
      blocks[to].focus();
    });
  });

  // What a link leads to may be folded away.
  const unfold = () => {
    const target = document.getElementById(location.hash.slice(1));
    if (!target) return;
    for (let e = target; e; e = e.parentElement) if (e.tagName === 'DETAILS') e.open = true;
    target.scrollIntoView({block: target.tagName === 'TR' ? 'center' : 'start'});
  };
  addEventListener('hashchange', unfold);
  unfold();

  all('[data-unfold]').forEach(button => button.addEventListener('click', () => {
    const open = button.dataset.unfold === 'all';
    all(`${button.dataset.of} details`).forEach(details => { details.open = open; });
  }));

  // The file drawn wider keeps what is in its middle there.
  const zoom = document.getElementById('zoom');
  if (zoom) zoom.addEventListener('input', () => {
    const scroll = document.getElementById('map');
    const middle = (scroll.scrollLeft + scroll.clientWidth / 2) / scroll.scrollWidth;
    scroll.firstElementChild.style.width = `${100 * 2 ** zoom.value}%`;
    scroll.scrollLeft = middle * scroll.scrollWidth - scroll.clientWidth / 2;
  });
  all('[data-script]').forEach(element => { element.hidden = false; });
})();
)js";
