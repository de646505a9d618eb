"""Sphinx's settings for the sources that tools/pages.py makes."""

import os
import re
from pathlib import Path

project = "vek"
author = "the vek developers"
release = version = os.environ.get("VEK_VERSION", "")
html_title = "vek"
extensions = ["myst_parser", "sphinx_copybutton"]
exclude_patterns = ["static", "scene"]
root_doc = "index"
myst_heading_anchors = 4
suppress_warnings = ["myst.xref_missing", "toc.excluded"]
highlight_language = "none"
pygments_style = "xcode"  # whose colours are far enough from the background
html_theme = "furo"
html_static_path = ["static"]
html_css_files = ["vek.css"]
html_copy_source = False
html_show_sourcelink = False
html_show_sphinx = False
html_show_copyright = False
html_theme_options = {
    "light_css_variables": {
        "color-brand-primary": "#0b5c8a", "color-brand-content": "#0b5c8a", "color-code-background": "#f6f7f8",
        "font-stack": "system-ui, -apple-system, 'Segoe UI', 'Noto Sans', 'DejaVu Sans', sans-serif",
        "font-stack--monospace": "ui-monospace, 'SF Mono', Menlo, Consolas, 'Noto Sans Mono', 'DejaVu Sans Mono', monospace",
    },
    # All of them: the theme as Debian has it lacks dark colours.
    "dark_css_variables": {
        "color-brand-primary": "#6cb8e6", "color-brand-content": "#6cb8e6", "color-problematic": "#ee5151",
        "color-foreground-primary": "#d7dadd", "color-foreground-secondary": "#a2a7ad",
        "color-foreground-muted": "#8b9097",
        "color-foreground-border": "#666666", "color-background-primary": "#131416",
        "color-background-secondary": "#1a1c1e", "color-background-hover": "#1e2124",
        "color-background-hover--transparent": "#1e212400", "color-background-border": "#303335",
        "color-background-item": "#444444", "color-highlighted-background": "#083563",
        "color-highlight-on-target": "#333300", "color-admonition-background": "#18181a",
        "color-card-background": "#18181a", "color-guilabel-background": "#08356380",
        "color-guilabel-border": "#13395f80",
    },
}
copybutton_selector = "div.highlight pre"


def finish(app, exception):
    """What the theme as Debian has it lacks: a style sheet and a module by their paths on this machine, which the
    site takes in, and what assistive programs need. Scripts that nothing uses are left out."""
    static = Path(app.outdir) / "_static"
    normalize = Path("/usr/share/javascript/normalize.css/normalize.css")
    style = static / "styles/furo.css"
    style.write_text(re.sub(r"@import url\([^)]*normalize.css\);",
                            lambda _: normalize.read_text() if normalize.exists() else "",
                            style.read_text()))
    script, module = static / "scripts/furo.js", static / "scripts/gumshoe-patched.js"
    if script.read_text().startswith("import Gumshoe"):
        script.write_text(module.read_text() + script.read_text().split("\n", 1)[1])
    for page in Path(app.outdir).rglob("*.html"):
        text = page.read_text()
        text = text.replace('role="heading"', 'role="heading" aria-level="2"').replace(
            '<div class="highlight"><pre>', '<div class="highlight"><pre tabindex="0">')
        text = re.sub(r'\n *<script[^>]*(?:jquery|underscore|_sphinx_javascript_frameworks_compat)\.js"></script>', "",
                      text)
        page.write_text(text)
    for name in ("jquery.js", "underscore.js", "_sphinx_javascript_frameworks_compat.js"):
        (static / name).unlink(missing_ok=True)


def setup(app):
    app.connect("build-finished", finish)
