// How alike pictures are. A browser decodes the files; for parts of them it brings the second one to
// the size of the first.

// Runs in the page.
async function compareThere([files, pairs]) {
  const images = [];
  for (const file of files) {
    const image = new Image();
    image.src = 'data:image/png;base64,' + file;
    await image.decode();
    const { width, height } = images[0] ?? image;
    const differs = image.width !== width || image.height !== height;
    if (differs && !pairs) return [{ structure: -1, color: 255 }];
    const context = new OffscreenCanvas(width, height).getContext('2d');
    context.imageSmoothingQuality = 'high';
    context.drawImage(image, 0, 0, width, height);
    images.push(context.getImageData(0, 0, width, height));
  }
  const grayAt = ({ data, width }, x, y) => {
    const at = 4 * (y * width + x);
    return 0.299 * data[at] + 0.587 * data[at + 1] + 0.114 * data[at + 2];
  };

  function windowAlike([ax, ay], [bx, by]) {
    let [sa, sb, saa, sbb, sab] = [0, 0, 0, 0, 0];
    for (let i = 0; i < 64; ++i) {
      const a = grayAt(images[0], ax + (i % 8), ay + (i >> 3));
      const b = grayAt(images[1], bx + (i % 8), by + (i >> 3));
      ((sa += a), (sb += b), (saa += a * a), (sbb += b * b), (sab += a * b));
    }
    const [ma, mb] = [sa / 64, sb / 64];
    const [va, vb, vab] = [saa / 64 - ma * ma, sbb / 64 - mb * mb, sab / 64 - ma * mb];
    const [c1, c2] = [6.5025, 58.5225];
    return ((2 * ma * mb + c1) * (2 * vab + c2)) / ((ma * ma + mb * mb + c1) * (va + vb + c2));
  }

  function structure(a, b) {
    let sum = 0;
    let count = 0;
    for (let y = 0; y + 8 <= a.height; y += 4) {
      for (let x = 0; x + 8 <= a.width; x += 4, ++count)
        sum += windowAlike([a.left + x, a.top + y], [b.left + x, b.top + y]);
    }
    return sum / count;
  }

  function meanColor({ data, width: whole }, { left, top, width, height }) {
    const sums = [0, 0, 0];
    for (let y = top; y < top + height; ++y) {
      for (let x = left; x < left + width; ++x)
        sums.forEach((_, c) => (sums[c] += data[4 * (y * whole + x) + c]));
    }
    return sums.map((sum) => sum / (width * height));
  }

  const [one, other] = images;
  const whole = { left: 0, top: 0, width: one.width, height: one.height };
  return (pairs ?? [[whole, whole]]).map(([a, b]) => {
    const otherColor = meanColor(other, b);
    const differences = meanColor(one, a).map((mean, c) => Math.abs(mean - otherColor[c]));
    return { structure: structure(a, b), color: Math.max(...differences) };
  });
}

// Of parts of two PNG files, each pair as two boxes of one size (left, top, width, height): the mean
// structural similarity in shades of gray by windows of 8 x 8 (Wang and others 2004), and by how
// many of 255 shades the mean of a color channel differs.
export function compare(page, one, other, pairs) {
  const files = [one, other].map((file) => file.toString('base64'));
  return page.evaluate(compareThere, [files, pairs]);
}

// The structural similarity of whole pictures, -1 for those of different sizes.
export async function similarity(page, one, other) {
  return (await compare(page, one, other, null))[0].structure;
}
