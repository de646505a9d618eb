"""Sphinx's settings for the sources that tools/pages.py makes."""

import os
import re

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
html_theme = "furo"
html_static_path = ["static"]
html_css_files = ["vek.css"]
html_copy_source = False
html_show_sourcelink = False
html_show_sphinx = False
html_show_copyright = False
html_theme_options = {
    "light_css_variables": {
        "color-brand-primary": "#0b5c8a", "color-brand-content": "#0b5c8a",
        "font-stack": "system-ui, -apple-system, 'Segoe UI', 'Noto Sans', 'DejaVu Sans', sans-serif",
        "font-stack--monospace": "ui-monospace, 'SF Mono', Menlo, Consolas, 'Noto Sans Mono', 'DejaVu Sans Mono', monospace",
    },
    "dark_css_variables": {"color-brand-primary": "#6cb8e6", "color-brand-content": "#6cb8e6"},
}
copybutton_selector = "div.highlight pre"
