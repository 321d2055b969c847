// The search: an index of all sections of the manual, made in the browser from their texts when somebody begins to search.

const MOST_RESULTS = 20;
const EXCERPT = 140;

let index = null;

async function loadIndex() {
  const [{ default: MiniSearch }, sections] = await Promise.all([
    import("./minisearch.js"), fetch(new URL("search.json", import.meta.url)).then((response) => response.json()),
  ]);
  const search = new MiniSearch({
    idField: "address", fields: ["heading", "title", "text"], storeFields: ["title", "heading", "text"],
    searchOptions: { boost: { heading: 5, title: 2 }, prefix: true, combineWith: "AND", fuzzy: (term) => (term.length > 4 ? 0.2 : false) },
  });
  search.addAll(sections);
  return search;
}

// The part of a text around the first of the words that were found in it.
function excerpt({ text, terms }) {
  const lower = text.toLowerCase();
  const places = terms.map((term) => lower.indexOf(term)).filter((place) => place >= 0);
  const begin = places.length === 0 ? 0 : Math.max(0, Math.min(...places) - EXCERPT / 3);
  const from = begin === 0 ? 0 : text.indexOf(" ", begin) + 1;
  return (from > 0 ? "... " : "") + text.slice(from, from + EXCERPT) + (from + EXCERPT < text.length ? " ..." : "");
}

function item(result) {
  const link = document.createElement("a");
  link.href = new URL(result.id, import.meta.url).href;
  link.textContent = result.heading === result.title ? result.title : `${result.heading} (${result.title})`;
  const text = document.createElement("p");
  text.textContent = excerpt(result);
  const made = document.createElement("li");
  made.append(link, text);
  return made;
}

// Connects the page's search field.
export function prepareSearch() {
  const field = document.getElementById("search");
  const found = document.getElementById("found");
  const status = found.querySelector("p");
  const search = async () => {
    const wanted = field.value.trim();
    found.hidden = wanted === "";
    if (wanted === "") return;
    try {
      index ??= loadIndex();
      const results = (await index).search(wanted).slice(0, MOST_RESULTS);
      if (field.value.trim() !== wanted) return; // typed on in the meantime
      status.textContent = results.length === 0 ? `Nothing is found for "${wanted}".` : `${results.length} places for "${wanted}"`;
      found.querySelector("ol").replaceChildren(...results.map(item));
    } catch {
      index = null;
      status.textContent = "The search could not be loaded.";
    }
  };
  field.addEventListener("input", search);
  field.form.addEventListener("submit", (event) => {
    event.preventDefault();
    found.querySelector("a")?.click();
  });
  field.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    field.value = "";
    search();
  });
  // "/" leads to the field, as on other sites.
  document.addEventListener("keydown", (event) => {
    if (event.key !== "/" || event.target !== document.body) return;
    event.preventDefault();
    field.focus();
  });
}
