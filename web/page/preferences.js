// What a person has chosen, between visits; where the browser keeps nothing, for as long as the page is open.

const chosen = new Map();

export function preference(name) {
  try {
    return localStorage.getItem(`korvane ${name}`) ?? chosen.get(name) ?? "";
  } catch {
    return chosen.get(name) ?? "";
  }
}

export function setPreference(name, value) {
  chosen.set(name, value);
  try {
    localStorage.setItem(`korvane ${name}`, value);
  } catch {
    // It holds until the page is closed.
  }
}
