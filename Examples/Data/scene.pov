// Still life before an arched opening: a glass sphere, a brass ring and a few
// plaster solids in warm late light. Set up for 16:9; see the render script.
#version 3.7;

#include "shapes.inc"

#declare FinalQuality = 1;  // 0 for a quick look with hard shadows and no indirect light

global_settings {
  assumed_gamma 1.0
  max_trace_level 12
  #if (FinalQuality)
    radiosity {
      pretrace_start 0.08  pretrace_end 0.005
      count 220  nearest_count 12  error_bound 0.35
      recursion_limit 2  low_error_factor 0.6  brightness 1.0
    }
    photons { spacing 0.012 }
  #end
}

camera {
  location <0.0, 2.75, -13.2>
  look_at  <0.0, 1.72, 0.0>
  right x*image_width/image_height
  angle 40
}

// ---- Materials -------------------------------------------------------------

#declare Plaster_Finish = finish { ambient 0 diffuse 0.8 specular 0.05 roughness 0.08 }

#macro Plaster(Colour)
  texture {
    pigment { color srgb Colour }
    normal { granite 0.025 scale 0.6 }
    finish { Plaster_Finish }
  }
#end

#declare Wall_Colour  = <0.17, 0.27, 0.31>;
#declare Ivory        = <0.90, 0.86, 0.79>;
#declare Terracotta   = <0.74, 0.44, 0.33>;
#declare Sage         = <0.47, 0.56, 0.50>;

#declare Polished_Floor = texture {
  pigment {
    bozo
    color_map { [0 color srgb <0.54, 0.50, 0.46>] [1 color srgb <0.61, 0.57, 0.53>] }
    scale <2.5, 1, 1.2>
    warp { turbulence 0.5 }
  }
  finish {
    ambient 0  diffuse 0.65
    reflection { 0.0, 0.35 fresnel on }
    conserve_energy
  }
}

#declare Clear_Glass = material {
  texture {
    pigment { color rgbft <0.96, 0.99, 0.98, 0.0, 1.0> }
    finish {
      ambient 0 diffuse 0 specular 0.9 roughness 0.0008
      reflection { 0.0, 1.0 fresnel on }
      conserve_energy
    }
  }
  interior { ior 1.5 fade_distance 3 fade_power 1001 fade_color <0.75, 0.95, 0.93> }
}

#declare Brass = texture {
  pigment { color rgb <0.78, 0.52, 0.20> }
  finish {
    ambient 0 diffuse 0.18 specular 0.7 roughness 0.02 metallic
    brilliance 2 reflection { 0.62 metallic }
  }
}

// ---- Light -----------------------------------------------------------------

// Soft key from the upper right front.
light_source {
  <9, 10, -8> rgb <1.00, 0.90, 0.78>*0.95
  #if (FinalQuality) area_light x*4.0, z*4.0, 9, 9 adaptive 1 jitter circular orient #end
  spotlight point_at <0.8, 1, 0> radius 28 falloff 55
}
// Sun behind the arch.
light_source {
  <30, 46, 48> rgb <1.0, 0.78, 0.52>*3.2
  #if (FinalQuality) area_light x*2.0, z*2.0, 7, 7 adaptive 1 jitter circular orient #end
}
// Faint cool fill so that the left does not sink into black.
light_source { <-12, 7, -10> rgb <0.55, 0.70, 0.85>*0.07 shadowless }

// ---- Room ------------------------------------------------------------------

box {
  <-40, -0.5, -40>, <40, 0, 5.2>
  texture { Polished_Floor }
  interior { ior 1.5 }
}

#declare Arch_X = 2.35;  // centre line of the opening
#declare Arch_R = 1.45;  // half its width
#declare Arch_H = 2.75;  // springing height

difference {
  box { <-14, 0, 3>, <14, 12, 3.7> }
  union {
    box { <Arch_X-Arch_R, -1, 2>, <Arch_X+Arch_R, Arch_H, 5> }
    cylinder { <Arch_X, Arch_H, 2>, <Arch_X, Arch_H, 5>, Arch_R }
    Plaster(Ivory)
  }
  Plaster(Wall_Colour)
}

// Calm water out to the horizon.
plane {
  y, -1.6
  pigment { color srgb <0.10, 0.24, 0.28> }
  normal { bumps 0.07 scale <4.0, 1, 1.2> }
  finish { ambient 0 diffuse 0.5 reflection { 0.04, 0.85 fresnel on } conserve_energy }
  interior { ior 1.33 }
}

// Evening sky seen through the arch.
sky_sphere {
  pigment {
    gradient y
    color_map {
      [0.00 color rgb <1.00, 0.72, 0.46>]
      [0.05 color rgb <1.00, 0.86, 0.66>]
      [0.14 color rgb <0.86, 0.88, 0.88>]
      [1.00 color rgb <0.22, 0.34, 0.46>]
    }
  }
}

// ---- Still life ------------------------------------------------------------

// Tall plinth with the ivory sphere.
object { Round_Box_Merge(<-2.55, 0, 0.2>, <-1.35, 2.05, 1.4>, 0.04) Plaster(Terracotta) }
sphere { <-1.95, 2.60, 0.8>, 0.55 Plaster(Ivory) }

// Low plinth with the glass sphere inside the brass ring.
object { Round_Box_Merge(<-1.20, 0, -1.0>, <1.30, 0.70, 0.9>, 0.04) Plaster(Ivory) }
torus {
  1.02, 0.075
  rotate x*90 rotate y*-18
  translate <0.05, 1.795, 0.15>
  texture { Brass }
}
sphere {
  <0.15, 1.32, -0.25>, 0.62
  material { Clear_Glass }
  photons { target refraction on reflection off }
}

// Small solids to the right.
cone { <2.05, 0, -0.4>, 0.55, <2.05, 1.35, -0.4>, 0.0 Plaster(Sage) }
sphere { <1.55, 0.24, -1.45>, 0.24 texture { Brass } }
