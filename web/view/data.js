// The data of the page: base64, most often of gzip, in the element `data`. web/site_view.h says what
// is in it.

function bytesOf(base64) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(base64);
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

// The page is painted before this is begun.
export async function readData() {
  const bytes = bytesOf(document.getElementById("data").textContent.trim());
  const isZipped = bytes[0] === 0x1f && bytes[1] === 0x8b;
  let stream = new Blob([bytes]).stream();
  if (isZipped) stream = stream.pipeThrough(new DecompressionStream("gzip"));
  return new Response(stream).json();
}
