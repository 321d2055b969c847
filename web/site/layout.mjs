// What all pages of the manual have around them.

const POLICY = "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self'; img-src 'self' blob:; " +
  "connect-src 'self'; worker-src 'self'; manifest-src 'self'; base-uri 'none'; form-action 'none'";

function escape(text) {
  return text.replaceAll("&", "&amp;").replaceAll("<", "&lt;").replaceAll('"', "&quot;");
}

function contents(headings) {
  if (headings.length < 4) return "";
  const items = headings.map(({ heading, anchor }) => `<li><a href="#${anchor}">${escape(heading)}</a></li>`).join("");
  return `<nav class="contents" aria-label="On this page"><ul>${items}</ul></nav>`;
}

// `up` leads from the page to the manual's folder ("" or "../"); `pages` are all pages {file, title}, in their order.
export function layout({ file, title, html, sections, pages, up }) {
  const items = pages.map((page) =>
    `<li><a href="${up}${page.file}"${page.file === file ? ' aria-current="page"' : ""}>${escape(page.title)}</a></li>`);
  const end = html.indexOf("</h1>") + "</h1>".length;
  const headings = sections.filter(({ heading }) => heading).slice(1);
  return `<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="${POLICY}">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta name="referrer" content="no-referrer">
<title>${escape(title)}${file === "index.html" ? "" : " - Korvane BASIC"}</title>
<link rel="icon" href="${up}../icon.svg" type="image/svg+xml">
<link rel="stylesheet" href="${up}../page/screen.css">
<link rel="stylesheet" href="${up}manual.css">
<script type="module" src="${up}manual.js"></script>
</head>
<body>
<a class="skip" href="#text">To the text</a>
<header>
<a class="home" href="${up}index.html">Korvane BASIC</a>
<form class="search" role="search">
<label for="search">Search</label> <input id="search" type="search" autocomplete="off" spellcheck="false">
</form>
<a class="machine" href="${up}../index.html">The machine</a>
</header>
<div id="found" hidden><p role="status"></p><ol></ol></div>
<div class="columns">
<main id="text">
${html.slice(0, end)}
${contents(headings)}
${html.slice(end)}
</main>
<nav class="pages" aria-label="Pages"><ul>
${items.join("\n")}
</ul></nav>
</div>
</body>
</html>
`;
}
