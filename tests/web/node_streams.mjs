// The browser's compressing streams for Node. Debian 12's has them without the kind that links are made of.

import { Duplex } from "node:stream";
import zlib from "node:zlib";

const KIND = "deflate-raw";

function hasKind() {
  try {
    return Boolean(new CompressionStream(KIND));
  } catch {
    return false;
  }
}

function streamOf(make) {
  return class {
    constructor(kind) {
      if (kind !== KIND) throw new TypeError(kind);
      Object.assign(this, Duplex.toWeb(make()));
    }
  };
}

if (!hasKind()) {
  globalThis.CompressionStream = streamOf(zlib.createDeflateRaw);
  globalThis.DecompressionStream = streamOf(zlib.createInflateRaw);
}
