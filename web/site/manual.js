// What is alive on the manual's pages: the search, and the examples.

import { keepSite } from "../page/offline.js";
import { playExamples } from "./example_player.js";
import { prepareSearch } from "./search.js";

prepareSearch();
playExamples();
keepSite();
