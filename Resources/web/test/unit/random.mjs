// A seeded random source for tests: `random(n)` gives an integer in [0, n), the same every run.
export function randomSource(seed) {
  return (n) => {
    // mulberry32: small, and good in every bit
    seed = (seed + 0x6d2b79f5) | 0;
    let t = Math.imul(seed ^ (seed >>> 15), 1 | seed);
    t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
    return ((((t ^ (t >>> 14)) >>> 0) / 4294967296) * n) | 0;
  };
}
