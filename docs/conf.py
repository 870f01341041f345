"""Sphinx's configuration; scripts/docs runs it on docs/ and what is generated beside it."""

import os

project = "SeluUtils"
copyright = "2026, the SeluUtils developers"
release = version = os.environ["SELU_VERSION"]
extensions = ["myst_parser", "sphinx.ext.mathjax"] + os.environ.get("SELU_EXTENSIONS", "").split()
myst_enable_extensions = ["deflist", "dollarmath"]
myst_heading_anchors = 3
myst_update_mathjax = False
exclude_patterns = ["_build"]
highlight_language = "cpp"
smartquotes = False
html_theme = "furo"
# Debian's build of the theme leaves the colors of its dark mode to its users.
html_theme_options = {
    "dark_css_variables": {
        "color-scheme": "dark",
        "color-problematic": "#ff8f80",
        "color-foreground-primary": "#dcdfe4",
        "color-foreground-secondary": "#a9b0ba",
        "color-foreground-muted": "#8b929c",
        "color-foreground-border": "#6a717b",
        "color-background-primary": "#16181c",
        "color-background-secondary": "#1d2025",
        "color-background-hover": "#272b31",
        "color-background-hover--transparent": "#272b3100",
        "color-background-border": "#343941",
        "color-background-item": "#3f454e",
        "color-announcement-background": "#000000dd",
        "color-announcement-text": "#eeebee",
        "color-brand-primary": "#7fb4ff",
        "color-brand-content": "#7fb4ff",
        "color-highlighted-background": "#0b3b8c",
        "color-guilabel-background": "#08365c80",
        "color-guilabel-border": "#13395f80",
        "color-admonition-background": "#1d2025",
        "color-highlight-on-target": "#33360f",
        "color-card-border": "#1d2025",
        "color-card-background": "#1a1d21",
        "color-card-marginals-background": "#1d2025",
        "color-inline-code-background": "#23272d",
        "color-sidebar-link-text--top-level": "#7fb4ff",
        "color-link": "#7fb4ff",
        "color-link--hover": "#a8ccff",
        "color-link-underline": "#343941",
        "color-link-underline--hover": "#6a717b",
        "color-api-background": "#1d2025",
        "color-api-name": "#ff9f8f",
        "color-api-pre-name": "#ff9f8f",
    },
}
html_title = f"SeluUtils {release}"
html_static_path = ["_static"]
html_css_files = ["seluutils.css"]
html_show_sourcelink = False
html_copy_source = False
html_use_index = True
numpydoc_show_class_members = False
autodoc_typehints = "none"
