"""The page: a picture of the timeline, the story, and the whole log folded by action. It needs no network."""

import html

from .reading import labels, lines

LEFT, TOP, ROW, BAR = 250, 34, 16, 11
WIDTH = 1100
# Told apart by the colour-blind too, and by their brightness in print.
COLOURS = {"immediate": "#56b4e9", "deferred": "#e69f00", "commit": "#009e73", "rollback": "#cc79a7"}
FAILED = "#000000"
STEPS = (1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400)

STYLE = """body{font:15px/1.4 sans-serif;margin:1.5em;max-width:1150px}
pre{font:12px/1.35 monospace;margin:0;white-space:pre-wrap}.story{background:#f3f3f3;padding:.8em;font-size:13px}
details{border-bottom:1px solid #ddd}summary{cursor:pointer;padding:2px}.hide{display:none}mark{background:#f0e442}
.bad{font-weight:bold}.bad::before{content:"\\2716  "}input{font-size:15px;width:30em}svg{max-width:100%;height:auto}"""
SCRIPT = """const box=document.getElementById("search"),all=[...document.querySelectorAll("details")];
box.addEventListener("input",()=>{const text=box.value.toLowerCase();let n=0;for(const d of all){let hit=false;
for(const l of d.querySelectorAll("span")){const has=!text||l.textContent.toLowerCase().includes(text);
l.classList.toggle("hide",!has);if(has){hit=true;n++}}d.classList.toggle("hide",!hit);d.open=text!==""&&hit}
document.getElementById("hits").textContent=text?n+" lines":""})"""


def picture(installation):
    """The timeline as SVG: a row an action in the order of their starts, a bar as long as it ran. Where the bands are
    empty the engine itself worked."""
    actions = sorted(installation.actions, key=lambda one: (one.start, one.first.number, one.depth))
    begin = min((one.start for one in actions), default=0)
    end = max((one.end for one in actions), default=0)
    # Stamps are whole seconds: an action that ends in the second in which it begins is as long as that.
    span = max(end - begin + 1, 1)
    scale = (WIDTH - LEFT - 20) / span
    height = TOP + ROW * len(actions) + 34
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" width="{WIDTH}" height="{height}" '
        'font-family="sans-serif" font-size="11" role="img">',
        "<title>Timeline of the actions</title>",
        f'<rect width="{WIDTH}" height="{height}" fill="#ffffff"/>',
    ]
    x = LEFT
    for phase, colour in COLOURS.items():
        parts.append(f'<rect x="{x}" y="6" width="12" height="12" fill="{colour}"/>')
        parts.append(f'<text x="{x + 16}" y="16">{phase}</text>')
        x += 90
    parts.append(f'<rect x="{x}" y="6" width="12" height="12" fill="none" stroke="{FAILED}" stroke-width="2"/>')
    parts.append(f'<text x="{x + 16}" y="16">failed</text>')
    parts.append(f'<rect x="{x + 70}" y="6" width="12" height="12" fill="#eeeeee"/>')
    parts.append(f'<text x="{x + 86}" y="16">the engine itself</text>')
    bottom = TOP + ROW * len(actions)
    for start, stop in gaps(actions):
        left, wide = LEFT + (start - begin) * scale, (stop - start) * scale
        parts.append(f'<rect x="{left:.1f}" y="{TOP}" width="{wide:.1f}" height="{bottom - TOP}" fill="#eeeeee"/>')
    step = next((step for step in STEPS if span / step <= 12), span)
    for second in range(0, span + 1, step):
        x = LEFT + second * scale
        parts.append(f'<line x1="{x:.1f}" y1="{TOP}" x2="{x:.1f}" y2="{bottom}" stroke="#cccccc"/>')
        parts.append(f'<text x="{x:.1f}" y="{bottom + 14}" text-anchor="middle">{second} s</text>')
    for row, action in enumerate(actions):
        y = TOP + row * ROW
        left = LEFT + (action.start - begin) * scale
        wide = max((action.end - action.start + (action.start == action.end)) * scale, 3)
        bad = action.rc != 0
        name = html.escape("\u00a0\u00a0" * action.depth + (action.row or action.title))
        weight = ' font-weight="bold"' if bad else ""
        edge = f' stroke="{FAILED}" stroke-width="2"' if bad else ""
        told = html.escape(f"{action.title}: {action.phase}, result {action.rc}, {action.end - action.start} s")
        parts.append(f'<text x="{LEFT - 6}" y="{y + 10}" text-anchor="end"{weight}>{name}</text>')
        parts.append(
            f'<rect x="{left:.1f}" y="{y + 1}" width="{wide:.1f}" height="{BAR}" '
            f'fill="{COLOURS.get(action.phase, "#999999")}"{edge}><title>{told}</title></rect>'
        )
    parts.append("</svg>")
    return "\n".join(parts)


def gaps(actions):
    """The seconds in which no action ran, as begins and ends."""
    found, reached = [], None
    for action in actions:
        if reached is not None and action.start > reached:
            found.append((reached, action.start))
        reached = max(reached or 0, action.end + (action.start == action.end))
    return found


def folded(paths, installations):
    """The logs' lines, a fold for each action and one for what is between two; as pieces of the page."""
    starts = {}
    for installation in installations:
        for action in installation.actions + installation.repeated:
            if not action.first.merged and action.depth == 0:
                starts[action.first.file, action.first.number] = action
    for path, label in zip(paths, labels(paths)):
        inside = None
        yield f'<h3>{html.escape(str(path))}</h3>\n<details><summary>before the first action</summary><pre>'
        for line in lines(path, label):
            action = starts.get((line.file, line.number))
            if action is not None:
                mark = ' class="bad"' if action.rc != 0 else ""
                told = html.escape(f"{action.first.stamp} {action.title}, {action.phase}, result {action.rc}")
                yield f"</pre></details>\n<details><summary{mark}>{told}</summary><pre>"
                inside = action
            text = f"{line.stamp} {line.action}: {line.text}" if line.stamp else line.text
            text = html.escape((">>" if line.merged else "") + "".join(c if c.isprintable() else "?" for c in text))
            text = f"<mark>{text}</mark>" if line.text.startswith("***") else text
            yield f"<span>{line.number:6} {text}\n</span>"
            last = inside is not None and inside.last is not None and not line.merged
            if last and (line.file, line.number) == (inside.last.file, inside.last.number):
                yield "</pre></details>\n<details><summary>the engine</summary><pre>"
                inside = None
        yield "</pre></details>\n"


def write(path, stories, logs):
    """Writes the page of these logs; `stories` has each installation with the lines of its story. Raises OSError."""
    with open(path, "w", encoding="utf-8", errors="replace", newline="\n") as file:
        file.write('<!doctype html>\n<html lang="en"><head><meta charset="utf-8"><title>Installation log</title>\n')
        file.write(f"<style>{STYLE}</style></head><body>\n")
        for installation, story in stories:
            told = html.escape("\n".join(story))
            file.write(f"<h2>{html.escape(', '.join(installation.files))}</h2>\n{picture(installation)}\n")
            file.write(f'<pre class="story">{told}</pre>\n')
        file.write("<h2>The log</h2>\n")
        file.write('<p><input id="search" placeholder="Search the log"> <span id="hits"></span></p>\n')
        file.writelines(folded(logs, [installation for installation, _ in stories]))
        file.write(f"<script>{SCRIPT}</script>\n</body></html>\n")
