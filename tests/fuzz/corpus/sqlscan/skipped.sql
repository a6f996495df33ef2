SELECT ':not', "&not" FROM t -- :nor
/* &nor */ WHERE a::int = :a AND b := :B