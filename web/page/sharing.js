// Links that carry programs: making one, and opening one.

import { element, openDialog } from "./dialogs.js";
import { BrokenLink, fragmentOf, LARGEST_PROGRAM, programOfFragment } from "./link.js";
import { freePath, isHostile, nameOf, pathOnVolume } from "./names.js";
import { hasProgramName } from "./program_text.js";

// Beyond this many characters some programs that pass links on cut them off.
const LONG_LINK = 8000;

// The program of this name would run by itself at the next start.
const STARTS_BY_ITSELF = "/STARTUP.BAS";

const BROKEN = "This link is broken: what it carries cannot be read. Ask for it once more, as a whole; nothing else is lost.";

export async function linkTo(name, bytes) {
  return `${location.origin}${location.pathname}#${await fragmentOf(name, bytes)}`;
}

// Lets the person choose a program of the volume, and shows its link.
export async function openShareDialog({ volume, say }) {
  const programs = volume.files().filter(({ path, bytes }) => hasProgramName(path) && bytes.length > 0);
  if (programs.length === 0) {
    say('There is no program on the volume yet: SAVE "NAME.BAS" puts the one in memory there.');
    return;
  }
  // What was saved last is most likely meant.
  const newest = programs.reduce((one, other) => ((other.modified ?? 0) > (one.modified ?? 0) ? other : one));
  const select = element("select", { id: "shared-program" });
  for (const { path } of programs) select.append(element("option", { value: path }, path.slice(1)));
  select.value = newest.path;
  const field = element("textarea", { id: "link", readonly: "", rows: "4", spellcheck: "false" });
  const remark = element("p", { class: "remark" });
  const update = async () => {
    const { path, bytes } = volume.get(select.value);
    if (bytes.length > LARGEST_PROGRAM) {
      field.value = "";
      remark.textContent = "This program is too long for a link: download it, and send the file.";
      return;
    }
    field.value = await linkTo(nameOf(path), bytes);
    remark.textContent = field.value.length > LONG_LINK
      ? `The link has ${field.value.length} characters, more than some mail and chat programs leave whole.`
      : `The link has ${field.value.length} characters.`;
  };
  select.addEventListener("change", update);
  field.addEventListener("focus", () => field.select());
  await update();
  const answer = await openDialog("Share a program", [
    element("p", {}, element("label", { for: "shared-program" }, "Program: "), select),
    element("p", {}, element("label", { for: "link" }, "Link:"), field), remark,
    element("p", {}, "The whole program is in the link, and nothing is sent anywhere. Whoever opens it gets the program listed. " +
      "A program that is not here is in memory only: SAVE it first."),
  ], [{ label: "Copy the link", value: "copy", first: true }, { label: "Close", value: "" }]);
  if (answer !== "copy" || field.value === "") return;
  try {
    await navigator.clipboard.writeText(field.value);
    say("The link is copied.");
  } catch {
    say(`The browser does not let the page copy; this is the link: ${field.value}`);
  }
}

// The program of the page's address as {path, bytes}, with a path that nothing on the volume has; null when the address
// carries none, or a broken one, which is told.
export async function programOfAddress({ volume, say }) {
  try {
    const program = await programOfFragment(location.hash);
    if (!program) return null;
    const given = isHostile(program.name) ? null : pathOnVolume(nameOf(program.name));
    const path = given === null || hasProgramName(given) ? given : given + ".BAS";
    const name = path === null || path === STARTS_BY_ITSELF ? "/LINK.BAS" : path;
    return { path: freePath(name, (path) => volume.get(path)), bytes: program.bytes, modified: Date.now() };
  } catch (error) {
    if (!(error instanceof BrokenLink)) throw error;
    say(BROKEN);
    return null;
  }
}
