// A page of docs/ as HTML.

import path from "node:path";
import MarkdownIt from "markdown-it";
import { readExample, runProgram } from "./examples.mjs";

const OPTIONS = /^<!-- example\n([^]*?)-->\s*$/;

// What a link may name behind "#": small letters, without marks, hyphens for blanks. tools/manual.py has the same rule.
export function anchorOf(title) {
  return title.toLowerCase().replace(/[^\p{L}\p{N}_\- ]/gu, "").replaceAll(" ", "-");
}

function textOf(inline) {
  return inline.children.map((token) => (token.type === "softbreak" ? " " : token.content)).join("");
}

// A link of the sources as one of the site; null for what is no page of it.
function siteLink(target, page) {
  if (/^[a-z]+:/i.test(target) || target.startsWith("#")) return target;
  const [file, anchor] = target.split("#");
  if (path.posix.normalize(path.posix.join(path.posix.dirname(page), file)).startsWith("..")) return null;
  return file.replace(/\.md$/, ".html") + (anchor === undefined ? "" : "#" + anchor);
}

function runButton(escape, example, title) {
  return `<button type="button" class="run" aria-label="${escape(title)}" data-example="${escape(JSON.stringify(example))}">Run</button>`;
}

// One line of an example: what is typed stands out, what the tests alone look at does not.
function exampleLine(escape, line) {
  const kind = line.startsWith("> ") ? "typed" : line.startsWith("@") ? "step" : null;
  return kind ? `<span class="${kind}">${escape(line)}</span>` : escape(line);
}

// Renders a page, whose name is its path below docs/: {html, title, sections}, the sections as {heading, anchor, text}.
export function renderPage(page, source) {
  const markdown = new MarkdownIt({ html: true });
  const { escapeHtml: escape } = markdown.utils;
  const sections = [{ heading: "", anchor: "", text: "" }];
  const open = []; // links that are left out, or not
  let options = [];
  let count = 0;
  const anchors = new Map(); // how often each was wanted
  const rules = markdown.renderer.rules;

  rules.heading_open = (tokens, index, settings, environment, renderer) => {
    const title = textOf(tokens[index + 1]);
    const wanted = anchorOf(title);
    const times = anchors.get(wanted) ?? 0;
    anchors.set(wanted, times + 1);
    const anchor = times === 0 ? wanted : `${wanted}-${times}`;
    tokens[index].attrSet("id", anchor);
    sections.push({ heading: title, anchor, text: "" });
    return renderer.renderToken(tokens, index, settings);
  };
  rules.html_block = (tokens, index) => {
    const comment = OPTIONS.exec(tokens[index].content);
    if (!comment) throw new Error(`${page}: HTML that is no example's comment: ${tokens[index].content}`);
    options = comment[1].split("\n").filter((line) => line !== "");
    return "";
  };
  rules.html_inline = (tokens, index) => escape(tokens[index].content);
  rules.fence = (tokens, index) => {
    const { info, content } = tokens[index];
    const lines = content.replace(/\n$/, "").split("\n");
    sections.at(-1).text += " " + content;
    if (info !== "basic") return `<pre tabindex="0"><code>${escape(content)}</code></pre>\n`;
    const example = readExample(options, lines);
    options = [];
    const body = lines.map((line) => exampleLine(escape, line)).join("\n");
    return `<div class="example"><pre tabindex="0"><code>${body}</code></pre>${runButton(escape, example, `Run example ${++count}`)}</div>\n`;
  };
  rules.code_block = (tokens, index) => {
    sections.at(-1).text += " " + tokens[index].content;
    return `<pre tabindex="0"><code>${escape(tokens[index].content)}</code></pre>\n`;
  };
  rules.code_inline = (tokens, index) => {
    const { content } = tokens[index];
    const code = `<code>${escape(content)}</code>`;
    return page === "examples.md" && /^\w+\.bas$/.test(content)
      ? `${code} ${runButton(escape, runProgram(content), `Run ${content}`)}` : code;
  };
  rules.link_open = (tokens, index, settings, environment, renderer) => {
    const target = siteLink(tokens[index].attrGet("href"), page);
    open.push(target);
    if (target === null) return "<span>";
    tokens[index].attrSet("href", target);
    return renderer.renderToken(tokens, index, settings);
  };
  rules.link_close = () => (open.pop() === null ? "</span>" : "</a>");
  rules.th_open = rules.td_open = (tokens, index, settings, environment, renderer) => {
    // The policy of the pages forbids styles in them.
    const style = tokens[index].attrGet("style");
    if (style) tokens[index].attrs = [["class", style.replace("text-align:", "")]];
    return renderer.renderToken(tokens, index, settings);
  };
  rules.table_open = () => '<div class="table" tabindex="0"><table>\n';
  rules.table_close = () => "</table></div>\n";

  const tokens = markdown.parse(source, {});
  // What is searched is what is read: paragraphs and cells, under the heading that stands above them.
  let at = 0;
  const html = markdown.renderer.render(tokens, markdown.options, {});
  const headings = sections.slice(1);
  let section = sections[0];
  tokens.forEach((token, index) => {
    if (token.type === "heading_open") section = headings[at++];
    else if (token.type === "inline" && tokens[index - 1].type !== "heading_open") section.text += " " + textOf(token);
  });
  const title = headings[0]?.heading ?? page;
  return { html: withoutEmptyHeads(html), title, sections: sections.filter(({ heading, text }) => heading || text.trim()) };
}

// Tables of the manual have no head where there is nothing to say in it; an empty one would be read aloud.
function withoutEmptyHeads(html) {
  return html.replace(/<thead>\s*<tr>(\s*<th[^>]*><\/th>)+\s*<\/tr>\s*<\/thead>\n?/g, "").replaceAll("<th></th>", "<td></td>");
}
