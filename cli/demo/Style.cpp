// The look of the demo page, by day and by night.
#include "Page.h"

namespace demo {

const std::string_view kStyle = R"(
:root {
  color-scheme: light dark;
  --ground: #f5f4f1; --card: #ffffff; --ink: #23222b; --soft: #6c6a78; --line: #e3e0da;
  --chip: #f0eef5; --accent: #5b4bb7; --bad: #a8324a; --warn: #8a5a00;
  --check-a: #ffffff; --check-b: #e6e4ea;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #16151c; --card: #201f29; --ink: #ebe9f2; --soft: #a09dae; --line: #312f3d;
    --chip: #2c2a38; --accent: #b3a6ff; --bad: #ff8fa3; --warn: #f0c069;
    --check-a: #3a3845; --check-b: #2b2934;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; max-width: 1480px; padding: 2.5rem 2rem 4rem; background: var(--ground); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Helvetica Neue", "DejaVu Sans", sans-serif;
}
h1 { margin: 0; font-size: 2.4rem; letter-spacing: -0.02em; color: var(--accent); }
header p { margin: 0.3rem 0 1rem; color: var(--soft); }
h2 {
  margin: 2.6rem 0 1rem; padding-bottom: 0.4rem; border-bottom: 1px solid var(--line);
  font-size: 1.05rem; font-weight: 600;
}
ul { margin: 0; padding: 0; list-style: none; display: flex; flex-wrap: wrap; }
.summary { gap: 0.4rem 1.6rem; color: var(--soft); }
.summary b { color: var(--ink); font-size: 1.15rem; }
section { display: grid; grid-template-columns: repeat(auto-fill, minmax(248px, 1fr)); gap: 1.1rem; }
.card {
  display: flex; flex-direction: column; min-width: 0; padding-bottom: 0.9rem; overflow: hidden;
  background: var(--card); border: 1px solid var(--line); border-radius: 12px;
}
.card > :not(.stage) { margin: 0.5rem 1rem 0; }
.stage {
  height: 240px; padding: 14px; display: flex; flex-wrap: wrap; gap: 12px;
  align-items: center; align-content: center; justify-content: center; overflow: hidden;
  border-bottom: 1px solid var(--line);
  background: repeating-conic-gradient(var(--check-a) 0 25%, var(--check-b) 0 50%) 50% / 18px 18px;
}
.stage.empty { background: var(--chip); color: var(--soft); font-size: 3rem; font-weight: 200; }
.stage a { display: flex; }
.stage img { height: auto; max-height: 208px; min-height: 1px; }
.crisp { image-rendering: pixelated; }
h3 { font-size: 0.95rem; font-weight: 600; overflow-wrap: anywhere; line-height: 1.35; }
.title { color: var(--soft); font-size: 0.88rem; line-height: 1.4; }
.facts { gap: 0.3rem; }
.facts li { padding: 0.05rem 0.5rem; border-radius: 99px; background: var(--chip); font-size: 0.78rem; }
code { font: 0.92em/1.4 ui-monospace, "DejaVu Sans Mono", monospace; overflow-wrap: anywhere; }
.arguments { font-size: 0.78rem; color: var(--soft); }
.note { padding-left: 0.6rem; border-left: 3px solid var(--line); font-size: 0.82rem; overflow-wrap: anywhere; }
.note code:first-of-type { display: block; opacity: 0.8; }
.note.refused { border-color: var(--bad); color: var(--bad); }
.note.partly { border-color: var(--warn); color: var(--warn); }
)";

}  // namespace demo
